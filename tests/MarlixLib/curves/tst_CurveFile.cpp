#include <MarlixLib/curves/CurveFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <initializer_list>

using namespace Marlix;

namespace {
// Big-endian 16-bit words, as the format stores everything.
QByteArray words(std::initializer_list<int> values)
{
    QByteArray bytes;
    for (const int v : values)
        bytes.append(char(v >> 8 & 0xff)).append(char(v & 0xff));
    return bytes;
}

ArrayView<const std::byte> view(const QByteArray& bytes)
{
    return { reinterpret_cast<const std::byte*>(bytes.constData()), std::size_t(bytes.size()) };
}

QByteArray fixture(const char* name)
{
    // A cached build names this source relative to the build folder, whose "tests" folder holds the executable.
    QDir here = QFileInfo(QString::fromUtf8(__FILE__)).dir();
    if (here.isRelative())
        here.setPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../") + here.path());
    QFile file(here.filePath(QStringLiteral("../../data/curves/") + QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The curve a file point list stands for: (output, input) pairs become (input, output) / 255.
Curve fileCurve(std::initializer_list<std::pair<int, int>> pairs)
{
    Array<Vector2> points;
    for (const auto& [output, input] : pairs)
        points.push_back({ input / 255.0, output / 255.0 });
    return Curve(points, CurveInterpolation::CubicSpline);
}

const QByteArray TWO_CURVES = words({ 4, 2, 2, 0, 0, 255, 255, 3, 10, 0, 100, 128, 240, 255 });
} // namespace

class TestCurveFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownFilesRoundTripByteForByte_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("four channels") << "tone_v1.acv";
        QTest::newRow("nineteen points") << "nineteen_points_v1.acv";
    }
    void ownFilesRoundTripByteForByte()
    {
        QFETCH(QString, name);
        const QByteArray bytes = fixture(name.toLatin1().constData());
        QVERIFY(!bytes.isEmpty());
        const auto curves = readCurves(view(bytes));
        QVERIFY2(curves, curves ? "" : curves.error().c_str());
        const auto written = writeCurves(*curves);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(written.data()), qsizetype(written.size())), bytes);
    }

    void readsVersion4()
    {
        const auto v1 = readCurves(view(fixture("tone_v1.acv")));
        const auto v4 = readCurves(view(fixture("tone_v4.acv")));
        QVERIFY(v1 && v4);
        QCOMPARE(*v4, *v1);
        QCOMPARE(v1->getChannelCount(), std::size_t(4));
        QCOMPARE(v1->getChannel(2), fileCurve({ { 0, 0 }, { 128, 100 }, { 255, 255 } }));
        // The extended block places its curves by channel index; one it cannot follow is passed over.
        const QByteArray head = TWO_CURVES;
        const auto withBlock = readCurves(view(head + "Crv " + words({ 4, 0, 1, 1, 2, 255, 0, 0, 255 })));
        QVERIFY(withBlock);
        QCOMPARE(withBlock->getChannel(1), fileCurve({ { 255, 0 }, { 0, 255 } }));
        for (const QByteArray& tail : { QByteArray("Crv "), QByteArray("junk"), "Crv " + words({ 4, 0, 1, 7 }),
                 "Crv " + words({ 4, 0, 1, 1, 2, 0, 255, 255 }) })
            QCOMPARE(*readCurves(view(head + tail)), *readCurves(view(head)));
    }

    void refusesMalformedFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty") << QByteArray() << "The curve file is empty";
        QTest::newRow("odd length") << QByteArray("\0\1\0", 3)
                                    << "The curve file is too short to hold its version and curve count";
        QTest::newRow("bad version") << words({ 7, 1, 2, 0, 0, 255, 255 }) << "Version 7 is not a curve file version";
        QTest::newRow("ends in curve 2") << words({ 1, 2, 2, 0, 0, 255, 255, 3, 0, 0 })
                                         << "The curve file ends inside curve 2";
        QTest::newRow("ends at curve 2") << words({ 1, 2, 2, 0, 0, 255, 255 }) << "The curve file ends inside curve 2";
        QTest::newRow("oversized count") << words({ 1, 65535, 2, 0, 0, 255, 255 })
                                         << "The curve file ends inside curve 2";
        QTest::newRow("too many points") << words({ 1, 3, 2, 0, 0, 255, 255, 2, 0, 0, 255, 255, 25 })
                                         << "Curve 3 has 25 points; a curve has 2 to 19";
        QTest::newRow("one point") << words({ 4, 1, 1, 0, 0 }) << "Curve 1 has 1 point; a curve has 2 to 19";
        QTest::newRow("input") << words({ 1, 1, 4, 0, 0, 9, 9, 9, 10, 9, 300 })
                               << "Point 4 of curve 1 has the input 300; inputs are 0 to 255";
        QTest::newRow("output") << words({ 1, 1, 2, 0, 0, 256, 255 })
                                << "Point 2 of curve 1 has the output 256; outputs are 0 to 255";
        QTest::newRow("inputs repeat") << words({ 1, 1, 3, 0, 0, 9, 9, 9, 9 })
                                       << "Inputs of curve 1 do not increase at point 3";
        QTest::newRow("trailing bytes") << words({ 1, 1, 2, 0, 0, 255, 255, 0 }) + "x"
                                        << "The curve file has 3 bytes after its last curve";
    }
    void refusesMalformedFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        const auto read = readCurves(view(bytes));
        QVERIFY(!read);
        QCOMPARE(QString::fromStdString(read.error()).left(message.size()), message);
    }

    void writesWhatOtherReadersRead()
    {
        // Points closer than a tone step merge; a curve of more than 19 points keeps the 19 that follow it best.
        Array<Vector2> many;
        for (int i = 0; i <= 40; ++i)
            many.push_back({ i / 40.0, 0.5 + 0.4 * std::sin(i / 4.0) });
        const Curves curves(Array<Curve> { Curve(many, CurveInterpolation::Linear),
            Curve(Array<Vector2> { { 0.0, 0.0 }, { 0.5, 0.5 }, { 0.5 + Curve::EPSILON, 0.7 }, { 1.0, 1.0 } },
                CurveInterpolation::Bezier) });
        const auto read = readCurves(writeCurves(curves));
        QVERIFY(read);
        QCOMPARE(read->getChannel(0).getPointCount(), CurveFileFormat::MAX_POINT_COUNT);
        QCOMPARE(read->getChannel(1).getPointCount(), std::size_t(4));
        for (int v = 0; v <= 255; v += 15)
            QVERIFY(std::abs(read->getChannel(0).evaluate(v / 255.0) - curves[0].evaluate(v / 255.0)) < 0.06);
    }

    void savesAndLoads()
    {
        QTemporaryDir dir;
        const Io::Path path = dir.filePath(QStringLiteral("tone.acv")).toStdString();
        const Curves curves(Array<Curve> { fileCurve({ { 0, 0 }, { 70, 64 }, { 255, 255 } }), Curve() });
        QVERIFY(saveCurves(curves, path));
        QCOMPARE(*loadCurves(path), curves);
        QVERIFY(!std::filesystem::exists(Io::Path(path) += ".partial"));
        // A failed save leaves the file that was there.
        QVERIFY(!saveCurves(curves, dir.filePath(QStringLiteral("missing/tone.acv")).toStdString()));
        QVERIFY(!saveCurves(Curves(70000, DefaultCurveType::Identity), path));
        QCOMPARE(*loadCurves(path), curves);
        const auto missing = loadCurves(dir.filePath(QStringLiteral("none.acv")).toStdString());
        QVERIFY(!missing && missing.error().find("none.acv") != String::npos);
        const auto folder = loadCurves(dir.path().toStdString());
        QVERIFY(!folder);
    }
};

QTEST_GUILESS_MAIN(TestCurveFile)
#include "tst_CurveFile.moc"
