#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/image/BitmapImpl.h>
#include <MarlixLib/image/ImageContentType.h>

#include <QtTest/QTest>

using namespace Marlix;

class TestBitmap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowsAreStoredTopDown();
    void badDimensionsAreErrors();
    void contentTypeFromName_data();
    void contentTypeFromName();
};

void TestBitmap::rowsAreStoredTopDown()
{
    BitmapImpl<RgbaBytes> bitmap(3, 2, RgbaBytes { 1, 2, 3, 4 });
    bitmap.at(2, 1) = RgbaBytes { 9, 9, 9, 9 };
    QCOMPARE(bitmap.getPixelCount(), std::size_t(6));
    QCOMPARE(bitmap.getPixels()[5], (RgbaBytes { 9, 9, 9, 9 }));
    QCOMPARE(bitmap.getRow(1).size(), std::size_t(3));
    QCOMPARE(bitmap.getRow(1)[2], (RgbaBytes { 9, 9, 9, 9 }));
    BitmapImpl<RgbaBytes> copy = bitmap;
    QVERIFY(copy == bitmap);
    copy.at(0, 0).a = 0;
    QVERIFY(copy != bitmap);
    QCOMPARE(bitmap.at(0, 0).a, std::uint8_t(4));
}

void TestBitmap::badDimensionsAreErrors()
{
    QVERIFY_THROWS_EXCEPTION(Exception, BitmapImpl<float>(-1, 2));
    QVERIFY_THROWS_EXCEPTION(Exception, BitmapImpl<float>(2, 2, Array<float>(3)));
    QCOMPARE(BitmapImpl<float>(2, 2, Array<float>(4, 0.5f)).at(1, 1), 0.5f);
    QVERIFY(BitmapImpl<float>(0, 5).isEmpty());
}

void TestBitmap::contentTypeFromName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("mime");
    const auto row = [](const char* what, const char* name, const char* mime) { QTest::newRow(what) << name << mime; };
    row("png", "a/b/c.png", "image/png");
    row("upper-case jpeg", "PHOTO.JPG", "image/jpeg");
    row("exr", "render.0001.exr", "image/x-exr");
    row("hdr", "sky.hdr", "image/vnd.radiance");
    row("tiff", "scan.Tiff", "image/tiff");
    row("no extension", "README", "");
    row("only a dot", "name.", "");
    row("hidden file", ".png", "");
    row("not an image", "scene.cbor", "");
    row("extension of a folder", "x.png/file", "");
}

void TestBitmap::contentTypeFromName()
{
    QFETCH(QString, name);
    QFETCH(QString, mime);
    const auto type = getImageContentType(Io::Path(name.toStdString()));
    QCOMPARE(type ? QString::fromUtf8(getMimeType(*type).data()) : QString(), mime);
}

QTEST_GUILESS_MAIN(TestBitmap)
#include "tst_Bitmap.moc"
