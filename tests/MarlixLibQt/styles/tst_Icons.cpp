#include <MarlixLibQt/styles/MarlixOriginalStyle.h>

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QTest>

class tst_Icons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void iconsAreInTheLibrary_data();
    void iconsAreInTheLibrary();
};

void tst_Icons::initTestCase()
{
    // The icons come with the library: a host that uses it has it loaded, and loading registers the resources.
    QApplication::setStyle(new Marlix::MarlixOriginalStyle);
}

void tst_Icons::iconsAreInTheLibrary_data()
{
    QTest::addColumn<QString>("path");
    for (const char* path : { ":icons/ui/Zorva.CurveEditor/Presets.png", ":icons/ui/Zorva.CurveEditor/Equalize.png",
             ":icons/ui/Zorva.CurveEditor/ClickAndDrag.png", ":icons/ui/Zorva.Dock/Undock.png",
             ":icons/ui/Zorva.Common/Reset.png", ":icons/ui/Zorva.Common/Add.png", ":icons/ui/Zorva.Common/Remove.png",
             ":icons/ui/Zorva.Common/Pin.png", ":icons/ui/Zorva.ColorPicker/Eyedropper.png" })
        QTest::newRow(path) << QString::fromLatin1(path);
}

void tst_Icons::iconsAreInTheLibrary()
{
    QFETCH(QString, path);

    const QPixmap pixmap(path);
    QVERIFY2(!pixmap.isNull(), qPrintable(path));
    QCOMPARE(pixmap.size(), QSize(16, 16));

    // The drawing is not empty: some pixels are opaque, some transparent.
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    int opaque = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            opaque += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
    QVERIFY(opaque > 8);
    QVERIFY(opaque < 16 * 16);

    // The drawing for screens of device pixel ratio 2 sits beside it, where Qt looks for it.
    QString doubled = path;
    doubled.replace(QLatin1String(".png"), QLatin1String("@2x.png"));
    QCOMPARE(QPixmap(doubled).size(), QSize(32, 32));

    QVERIFY(!QIcon(path).pixmap(QSize(16, 16)).isNull());
}

QTEST_MAIN(tst_Icons)
#include "tst_Icons.moc"
