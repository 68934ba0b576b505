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
    void outsideAccessStops();
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

void TestBitmap::outsideAccessStops()
{
    const BitmapImpl<float> bitmap(2, 2);
    QVERIFY_THROWS_EXCEPTION(StopException, bitmap.at(2, 0));
    QVERIFY_THROWS_EXCEPTION(StopException, bitmap.at(0, -1));
    QVERIFY_THROWS_EXCEPTION(StopException, bitmap.getRow(2));
}

void TestBitmap::contentTypeFromName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("mime");
    QTest::newRow("png") << "a/b/c.png"
                         << "image/png";
    QTest::newRow("upper-case jpeg") << "PHOTO.JPG"
                                     << "image/jpeg";
    QTest::newRow("exr") << "render.0001.exr"
                         << "image/x-exr";
    QTest::newRow("hdr") << "sky.hdr"
                         << "image/vnd.radiance";
    QTest::newRow("tiff") << "scan.Tiff"
                          << "image/tiff";
    QTest::newRow("no extension") << "README"
                                  << "";
    QTest::newRow("only a dot") << "name."
                                << "";
    QTest::newRow("hidden file") << ".png"
                                 << "";
    QTest::newRow("not an image") << "scene.cbor"
                                  << "";
    QTest::newRow("extension of a folder") << "x.png/file"
                                           << "";
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
