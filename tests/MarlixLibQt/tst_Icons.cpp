#include <MarlixLibQt/Icons.h>

#include <MarlixLib/base/Exception.h>

#include <QPixmap>
#include <QTest>

using namespace Marlix;

class tst_Icons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colorPatch_data();
    void colorPatch();
    void colorPatchNeedsASize();
    void grayscaleByLuminance_data();
    void grayscaleByLuminance();
    void productIconsAreMadeOnce();
};

void tst_Icons::colorPatch_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QColor>("centre");

    QTest::newRow("opaque") << QColor(255, 0, 0) << QColor(255, 0, 0);
    // A fully transparent colour shows the checkerboard: (5, 5) lies on a light square.
    QTest::newRow("translucent") << QColor(255, 255, 255, 0) << QColor(0x99, 0x99, 0x99);
    QTest::newRow("no colour") << QColor() << QColor(Qt::white);
}

void tst_Icons::colorPatch()
{
    QFETCH(QColor, color);
    QFETCH(QColor, centre);

    const QImage image = getColorPatchIcon(color, QSize(16, 16)).pixmap(QSize(16, 16)).toImage();
    QCOMPARE(image.size(), QSize(16, 16));
    QCOMPARE(image.pixelColor(5, 5).rgb(), centre.rgb());
    QCOMPARE(image.pixelColor(0, 0).rgb(), QColor(0x20, 0x20, 0x20).rgb()); // the border
    QCOMPARE(image.pixelColor(15, 15).rgb(), QColor(0x20, 0x20, 0x20).rgb());
}

void tst_Icons::colorPatchNeedsASize()
{
    QVERIFY_THROWS_EXCEPTION(Exception, getColorPatchIcon(Qt::red, QSize(0, 16)));
    QVERIFY_THROWS_EXCEPTION(Exception, getColorPatchIcon(Qt::red, QSize(16, -1)));
}

void tst_Icons::grayscaleByLuminance_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("grey");

    QTest::newRow("green is bright") << QColor(0, 255, 0) << 182;
    QTest::newRow("blue is dark") << QColor(0, 0, 255) << 18;
    QTest::newRow("alpha kept") << QColor(0, 255, 0, 100) << 182;
}

void tst_Icons::grayscaleByLuminance()
{
    QFETCH(QColor, color);
    QFETCH(int, grey);

    QImage image(2, 1, QImage::Format_ARGB32);
    image.fill(color);
    const QColor result = convertToGrayscale(image).pixelColor(1, 0);
    QCOMPARE(result.red(), grey);
    QCOMPARE(result.green(), grey);
    QCOMPARE(result.blue(), grey);
    QCOMPARE(result.alpha(), color.alpha());
    QVERIFY(convertToGrayscale(QImage()).isNull());
}

void tst_Icons::productIconsAreMadeOnce()
{
    const QIcon& velkin = getVelkinIcon();
    const QIcon& marlix = getMarlixIcon();
    QCOMPARE(&getVelkinIcon(), &velkin);
    QCOMPARE(&getMarlixIcon(), &marlix);

    for (const QIcon* icon : { &velkin, &marlix }) {
        QVERIFY(icon->availableSizes().contains(QSize(16, 16)));
        QVERIFY(icon->availableSizes().contains(QSize(256, 256)));
        // Drawn, not empty: the centre of the large image is opaque.
        QCOMPARE(icon->pixmap(QSize(256, 256)).toImage().pixelColor(128, 128).alpha(), 255);
    }
    QVERIFY(velkin.pixmap(QSize(64, 64)).toImage() != marlix.pixmap(QSize(64, 64)).toImage());
}

QTEST_MAIN(tst_Icons)
#include "tst_Icons.moc"
