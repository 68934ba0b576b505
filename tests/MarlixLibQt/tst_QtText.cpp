#include <MarlixLibQt/QtUtils.h>

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QProxyStyle>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

using namespace Marlix;

namespace {

// A line the style lets run without wrapping.
bool keptOnOneLine(const QString& html)
{
    return html.contains(QLatin1String("white-space:pre"));
}

/// Answers the tooltip metrics the way the test sets them, so the values visibly come from the style.
class TooltipMetricsStyle : public QProxyStyle
{
public:
    TooltipMetricsStyle()
        : QProxyStyle(QStringLiteral("fusion"))
    {
    }
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        switch (int(metric) - int(PM_CustomBase)) {
        case 2:
            return maximumWidth;
        case 3:
            return 1;
        case 4:
            return noWrapLength;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }
    int maximumWidth = 300;
    int noWrapLength = 10;
};

TooltipMetricsStyle* testStyle = nullptr;

} // namespace

class tst_QtText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void formatToolTip_data();
    void formatToolTip();
    void formatToolTipIsStable_data() { formatToolTip_data(); }
    void formatToolTipIsStable();
    void noWrapLengthComesFromTheStyle();
    void renderToolTipWrapsAtTheStyleWidth();
    void getQuoted_data();
    void getQuoted();
    void toTitleCase_data();
    void toTitleCase();
    void propertyNameToReadableName_data();
    void propertyNameToReadableName();
    void formatUiMessage_data();
    void formatUiMessage();
    void bitmapsToImages();
};

void tst_QtText::initTestCase()
{
    testStyle = new TooltipMetricsStyle;
    QApplication::setStyle(testStyle);
    QLocale::setDefault(QLocale::c());
}

void tst_QtText::formatToolTip_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shortcut");
    QTest::addColumn<QString>("shown"); // what the user reads, paragraph by paragraph

    QTest::newRow("title only") << "Scale" << "" << "" << "Scale";
    QTest::newRow("markup characters shown as typed") << "A < B & C" << "x<y" << "<Ctrl>" << "A < B & C\nx<y\n<Ctrl>";
    QTest::newRow("rich line kept") << "T" << "<p style='color:red'>Red</p>\nplain" << "" << "T\nRed\nplain";
    QTest::newRow("heading in the text wins") << "Ignored" << "<h4>Own</h4>\nbody" << "" << "Own\nbody";
    QTest::newRow("inner blank kept, outer dropped") << "" << "\nfirst\n\nsecond text here\n\n" << ""
                                                     << "first\n \nsecond text here";
    QTest::newRow("windows line ends") << "" << "a\r\nb" << "" << "a\nb";
    QTest::newRow("shortcut") << "Save" << "" << "Ctrl+S" << "Save\nCtrl+S";
    QTest::newRow("nothing") << "" << "" << "" << "";
}

void tst_QtText::formatToolTip()
{
    QFETCH(QString, title);
    QFETCH(QString, text);
    QFETCH(QString, shortcut);
    QFETCH(QString, shown);

    const QString html = Marlix::formatToolTip(title, text, shortcut);
    QTextDocument document;
    document.setHtml(html);
    QCOMPARE(document.toPlainText(), shown);
    if (!title.isEmpty() && !text.contains(QLatin1String("<h4>")))
        QVERIFY(html.startsWith(QLatin1String("<h4"))); // the title stands out as a heading
}

void tst_QtText::formatToolTipIsStable()
{
    QFETCH(QString, title);
    QFETCH(QString, text);
    QFETCH(QString, shortcut);

    const QString once = Marlix::formatToolTip(title, text, shortcut);
    QCOMPARE(Marlix::formatToolTip({}, once), once);
}

void tst_QtText::noWrapLengthComesFromTheStyle()
{
    const QString line = QStringLiteral("twelve chars");
    testStyle->noWrapLength = 12;
    QVERIFY(keptOnOneLine(Marlix::formatToolTip({}, line)));
    testStyle->noWrapLength = 11;
    QVERIFY(!keptOnOneLine(Marlix::formatToolTip({}, line)));
    testStyle->noWrapLength = 0; // a style without the metric: every line may wrap
    QVERIFY(!keptOnOneLine(Marlix::formatToolTip({}, QStringLiteral("a"))));
    testStyle->noWrapLength = 10;
}

void tst_QtText::renderToolTipWrapsAtTheStyleWidth()
{
    QWidget widget;
    const QString longText = Marlix::formatToolTip(
        QStringLiteral("Exposure"),
        QStringLiteral("The amount of light that reaches the sensor, in stops relative to the scene's base exposure, "
                       "applied before the tone mapping and the colour grading of the camera."));
    const QPixmap wrapped = renderToolTipToPixmap(longText, widget);
    QCOMPARE(wrapped.width(), 300);
    QVERIFY(wrapped.height() > 3 * QFontMetrics(QToolTip::font()).height());

    const QPixmap shortOne = renderToolTipToPixmap(QStringLiteral("Reset"), widget);
    QVERIFY(shortOne.width() > 0);
    QVERIFY(shortOne.width() < 150);
    QVERIFY(shortOne.height() < 3 * QFontMetrics(QToolTip::font()).height());

    testStyle->maximumWidth = 0; // no limit: the long text keeps its natural width
    QVERIFY(renderToolTipToPixmap(longText, widget).width() > 300);
    testStyle->maximumWidth = 300;

    QVERIFY(renderToolTipToPixmap(QString(), widget).isNull());
}

void tst_QtText::getQuoted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("one letter") << "a" << QStringLiteral("\u201Ca\u201D");
    QTest::newRow("empty") << "" << QStringLiteral("\u201C\u201D");
    QTest::newRow("inner quotes stay") << "say \"hi\"" << QStringLiteral("\u201Csay \"hi\"\u201D");
}

void tst_QtText::getQuoted()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(Marlix::getQuoted(text), expected);
}

void tst_QtText::toTitleCase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("joining word inside") << "depth of field" << "Depth of Field";
    QTest::newRow("joining words at the ends") << "the way to go in" << "The Way to Go In";
    QTest::newRow("acronym kept") << "RGB value" << "RGB Value";
    QTest::newRow("behind a bracket") << "(optional) path" << "(Optional) Path";
    QTest::newRow("spacing kept") << "  two  words " << "  Two  Words ";
    QTest::newRow("non-ascii") << "über alles" << "Über Alles";
}

void tst_QtText::toTitleCase()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(Marlix::toTitleCase(text), expected);
}

void tst_QtText::propertyNameToReadableName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");

    QTest::newRow("camel case") << "lightIntensity" << "Light intensity";
    QTest::newRow("snake case") << "light_intensity" << "Light intensity";
    QTest::newRow("acronym inside") << "baseURLValue" << "Base URL value";
    QTest::newRow("number inside") << "layer2Color" << "Layer 2 color";
    QTest::newRow("path") << "transform.position" << "Transform position";
    QTest::newRow("acronym alone") << "HDR" << "HDR";
    QTest::newRow("empty") << "" << "";
}

void tst_QtText::propertyNameToReadableName()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(Marlix::propertyNameToReadableName(name), expected);
}

void tst_QtText::formatUiMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("hasValue");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("expected");

    QTest::newRow("sentence closed") << "file not found" << false << 0.0 << "File not found.";
    QTest::newRow("own punctuation kept") << "  Done!  " << false << 0.0 << "Done!";
    QTest::newRow("placeholder") << "value %1 is too large" << true << 2.5 << "Value 2.5 is too large.";
    QTest::newRow("value appended") << "scale" << true << 0.25 << "Scale: 0.25.";
    QTest::newRow("value alone") << "" << true << 3.0 << "3.";
    QTest::newRow("huge value") << "huge" << true << 1e20 << "Huge: 1e+20.";
    QTest::newRow("nothing") << "" << false << 0.0 << "";
}

void tst_QtText::formatUiMessage()
{
    QFETCH(QString, message);
    QFETCH(bool, hasValue);
    QFETCH(double, value);
    QFETCH(QString, expected);

    const String utf8 = message.toStdString();
    QCOMPARE(Marlix::formatUiMessage(utf8, hasValue ? Optional<double>(value) : std::nullopt), expected);
}

void tst_QtText::bitmapsToImages()
{
    // Three pixels wide: QImage pads such rows, so a copy of the whole buffer in one piece would shift the second row.
    const BitmapImpl<RgbBytes> rgb(3, 2, Array<RgbBytes> { { 1, 2, 3 }, { 4, 5, 6 }, { 7, 8, 9 },
                                                          { 10, 11, 12 }, { 13, 14, 15 }, { 16, 17, 18 } });
    const QImage rgbImage = toQt(rgb);
    QCOMPARE(rgbImage.size(), QSize(3, 2));
    QCOMPARE(rgbImage.pixel(0, 0), qRgb(1, 2, 3));
    QCOMPARE(rgbImage.pixel(2, 1), qRgb(16, 17, 18));
    QCOMPARE(rgbImage.pixel(0, 1), qRgb(10, 11, 12));

    const BitmapImpl<RgbaBytes> rgba(1, 1, Array<RgbaBytes> { { 200, 100, 50, 128 } });
    QCOMPARE(toQt(rgba).pixelColor(0, 0), QColor(200, 100, 50, 128));

    const BitmapImpl<float> grey(5, 1, Array<float> { -1.0f, 0.0f, 0.5f, 1.0f, 2.0f });
    const QImage greyImage = toQt(grey);
    QCOMPARE(greyImage.format(), QImage::Format_Grayscale8);
    const QList<int> greys = { qGray(greyImage.pixel(0, 0)), qGray(greyImage.pixel(1, 0)), qGray(greyImage.pixel(2, 0)),
                               qGray(greyImage.pixel(3, 0)), qGray(greyImage.pixel(4, 0)) };
    QCOMPARE(greys, (QList<int> { 0, 0, 128, 255, 255 }));

    const BitmapImpl<Rgb> linear(1, 1, Array<Rgb> { Rgb(0.5f, 0.0f, 1.0f, 0.5f) });
    QCOMPARE(toQt(linear, false).pixelColor(0, 0), QColor(128, 0, 255, 128));
    QCOMPARE(toQt(linear, true).pixelColor(0, 0), QColor(186, 0, 255, 128)); // 0.5^(1/2.2) = 0.7297

    QVERIFY(toQt(BitmapImpl<RgbBytes>()).isNull());
}

QTEST_MAIN(tst_QtText)
#include "tst_QtText.moc"
