#include <MarlixLibQt/QtUtils.h>

#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QProxyStyle>
#include <QTest>
#include <QToolTip>

using namespace Marlix;

namespace {

const QString H = QStringLiteral("<h4 style='margin:0'>");
const QString P = QStringLiteral("<p style='margin:0'>");
const QString PRE = QStringLiteral("<p style='margin:0; white-space:pre'>");
const QString BLANK = QStringLiteral("<p style='margin:0'>&nbsp;</p>");
const QString SHORTCUT = QStringLiteral("<p style='margin:0; margin-top:4px; white-space:pre'><i>");

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
    void stringsAndBytes();
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
    QTest::addColumn<QString>("expected");

    QTest::newRow("title only") << "Scale" << "" << "" << H + "Scale</h4>";
    QTest::newRow("title escaped") << "A < B & C" << "" << "" << H + "A &lt; B &amp; C</h4>";
    QTest::newRow("short and long lines") << "Size" << "Short\nThis line is longer" << ""
                                          << H + "Size</h4>\n" + PRE + "Short</p>\n" + P + "This line is longer</p>";
    QTest::newRow("body escaped") << "" << "x<y" << "" << PRE + "x&lt;y</p>";
    QTest::newRow("rich line kept") << "T" << "<p style='color:red'>Red</p>\nplain" << ""
                                    << H + "T</h4>\n<p style='color:red'>Red</p>\n" + PRE + "plain</p>";
    QTest::newRow("heading in the text wins") << "Ignored" << "<h4>Own</h4>\nbody" << ""
                                              << "<h4>Own</h4>\n" + PRE + "body</p>";
    QTest::newRow("inner blank kept, outer dropped")
        << "" << "\nfirst\n\nsecond text here\n\n" << "" << PRE + "first</p>\n" + BLANK + "\n" + P + "second text here</p>";
    QTest::newRow("windows line ends") << "" << "a\r\nb" << "" << PRE + "a</p>\n" + PRE + "b</p>";
    QTest::newRow("shortcut") << "Save" << "" << "Ctrl+S" << H + "Save</h4>\n" + SHORTCUT + "Ctrl+S</i></p>";
    QTest::newRow("shortcut escaped") << "" << "" << "<Ctrl>" << SHORTCUT + "&lt;Ctrl&gt;</i></p>";
    QTest::newRow("nothing") << "" << "" << "" << "";
}

void tst_QtText::formatToolTip()
{
    QFETCH(QString, title);
    QFETCH(QString, text);
    QFETCH(QString, shortcut);
    QFETCH(QString, expected);

    QCOMPARE(Marlix::formatToolTip(title, text, shortcut), expected);
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
    QCOMPARE(Marlix::formatToolTip({}, line), PRE + line + "</p>");
    testStyle->noWrapLength = 11;
    QCOMPARE(Marlix::formatToolTip({}, line), P + line + "</p>");
    testStyle->noWrapLength = 0; // a style without the metric: every line may wrap
    QCOMPARE(Marlix::formatToolTip({}, QStringLiteral("a")), P + "a</p>");
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
    QTest::newRow("words") << "Base colour" << QStringLiteral("\u201CBase colour\u201D");
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
    QTest::newRow("single word") << "of" << "Of";
    QTest::newRow("empty") << "" << "";
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
    QTest::newRow("one letter") << "x" << "X";
    QTest::newRow("upper camel case") << "ColorSpace" << "Color space";
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
    QTest::newRow("colon kept") << "Choose:" << false << 0.0 << "Choose:";
    QTest::newRow("placeholder") << "value %1 is too large" << true << 2.5 << "Value 2.5 is too large.";
    QTest::newRow("value appended") << "scale" << true << 0.25 << "Scale: 0.25.";
    QTest::newRow("value alone") << "" << true << 3.0 << "3.";
    QTest::newRow("huge value") << "huge" << true << 1e20 << "Huge: 1e+20.";
    QTest::newRow("negative value") << "offset" << true << -12.0 << "Offset: -12.";
    QTest::newRow("non-ascii") << "über alles" << false << 0.0 << "Über alles.";
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

void tst_QtText::stringsAndBytes()
{
    const String text = "Grüße €";
    QCOMPARE(toQt(text), QStringLiteral("Grüße €"));
    QCOMPARE(fromQt(toQt(text)), text);

    const Stack<String> texts = { "a", "ü", "" };
    const QList<QString> qtTexts = { QStringLiteral("a"), QStringLiteral("ü"), QString() };
    QCOMPARE(toQt(ArrayView<const String>(texts)), qtTexts);
    QCOMPARE(fromQt(qtTexts), texts);
    const Array<StringView> views = { "x", "y" };
    QCOMPARE(toQt(ArrayView<const StringView>(views)), (QList<QString> { QStringLiteral("x"), QStringLiteral("y") }));

    const Array<std::byte> bytes = { std::byte { 0x00 }, std::byte { 0xff }, std::byte { 0x41 } };
    const QByteArray qtBytes = toQt(ArrayView<const std::byte>(bytes));
    QCOMPARE(qtBytes, QByteArray("\x00\xff\x41", 3));
    QCOMPARE(fromQt(qtBytes), bytes);
    QVERIFY(fromQt(QByteArray()).empty());
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
