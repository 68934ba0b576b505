#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/Histogram.h>

#include <QtTest/QTest>

#include <limits>

using namespace Marlix;

namespace {
constexpr int MASTER = int(ColorCurveChannel::Master);
constexpr int RED = int(ColorCurveChannel::Red);
constexpr int GREEN = int(ColorCurveChannel::Green);
constexpr int ALPHA = int(ColorCurveChannel::Alpha);

// 3 x 3 pixels: white, black, pure red and pure green in known numbers, one half-transparent grey.
BitmapImpl<RgbaBytes> smallImage()
{
    const RgbaBytes white { 255, 255, 255, 255 }, black { 0, 0, 0, 255 }, red { 255, 0, 0, 255 },
        green { 0, 255, 0, 255 }, grey { 128, 128, 128, 128 };
    return BitmapImpl<RgbaBytes>(3, 3, { white, white, black, red, red, red, green, grey, black });
}

// A tall image of two tones, so that it is split into bands on every worker.
BitmapImpl<RgbaBytes> twoTones(int width, int height)
{
    BitmapImpl<RgbaBytes> image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::uint8_t v = (x + y) % 4 == 0 ? 192 : 64;
            image.at(x, y) = { v, v, v, 255 };
        }
    return image;
}
} // namespace

class TestHistogram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsPerChannel_data()
    {
        QTest::addColumn<int>("channel");
        QTest::addColumn<int>("bin");
        QTest::addColumn<int>("expected");
        QTest::newRow("red full") << RED << 255 << 5;
        QTest::newRow("red none") << RED << 0 << 3;
        QTest::newRow("red grey") << RED << 128 << 1;
        QTest::newRow("green full") << GREEN << 255 << 3;
        QTest::newRow("alpha grey") << ALPHA << 128 << 1;
        QTest::newRow("alpha opaque") << ALPHA << 255 << 8;
        QTest::newRow("luminance white") << MASTER << 255 << 2;
        QTest::newRow("luminance red") << MASTER << 54 << 3;
        QTest::newRow("luminance green") << MASTER << 182 << 1;
        QTest::newRow("luminance black") << MASTER << 0 << 2;
    }
    void countsPerChannel()
    {
        QFETCH(int, channel);
        QFETCH(int, bin);
        QFETCH(int, expected);
        Scheduler scheduler("HistogramTest", 2);
        const Histogram histogram = Histogram::compute(smallImage(), Histogram::DEFAULT_BIN_COUNT, scheduler);
        QCOMPARE(histogram.getPixelCount(), std::uint64_t(9));
        QCOMPARE(histogram.getBins(channel)[std::size_t(bin)], std::uint64_t(expected));
        Histogram direct;
        direct.addPixels(smallImage().getPixels());
        QCOMPARE(direct, histogram);
    }

    void binsOfOtherCounts()
    {
        // Tone v falls into bin v * bins / 255: 128 of 255 is in the upper half.
        Histogram sixteen = Histogram::compute(smallImage(), 16);
        QCOMPARE(sixteen.getBins(RED)[8], std::uint64_t(1));
        QCOMPARE(sixteen.getBins(RED)[15], std::uint64_t(5));
        // Float images: the same tones, values outside [0, 1] and NaN in the end bins.
        const float nan = std::numeric_limits<float>::quiet_NaN();
        const BitmapImpl<Rgb> image(
            4, 1, Array<Rgb> { { 128 / 255.0f, 0, 0, 1 }, { 1.0f, 0, 0, 1 }, { 7.0f, 0, 0, 1 }, { nan, 0, 0, -2.0f } });
        const Histogram floats = Histogram::compute(image, 16);
        QCOMPARE(floats.getBins(RED)[8], std::uint64_t(1));
        QCOMPARE(floats.getBins(RED)[15], std::uint64_t(2));
        QCOMPARE(floats.getBins(RED)[0], std::uint64_t(1));
        QCOMPARE(floats.getBins(ALPHA)[0], std::uint64_t(1));
        QVERIFY_THROWS_EXCEPTION(Exception, Histogram(0));
        QVERIFY_THROWS_EXCEPTION(Exception, sixteen.merge(Histogram()));
        QVERIFY_THROWS_EXCEPTION(StopException, sixteen.getBins(Histogram::CHANNEL_COUNT));
    }

    void bandsOnWorkersAddUp()
    {
        const auto image = std::make_shared<const BitmapImpl<RgbaBytes>>(twoTones(301, 997));
        Scheduler scheduler("HistogramTest", 3);
        Histogram received(2);
        const auto task = Histogram::computeAsync(
            image, 256, [&](Histogram h) { received = std::move(h); }, scheduler);
        task->wait();
        QCOMPARE(task->getState(), TaskState::Finished);
        Histogram direct;
        direct.addPixels(image->getPixels());
        QCOMPARE(received, direct);
        QCOMPARE(received.getBins(RED)[192] + received.getBins(RED)[64], std::uint64_t(301 * 997));
        // A completion that throws fails its task, which keeps the reason; a bad bin count is refused at once.
        const auto failing = Histogram::computeAsync(
            image, 256, [](Histogram) { throw Exception("no room for the histogram"); }, scheduler);
        failing->wait();
        QCOMPARE(failing->getState(), TaskState::Failed);
        QVERIFY(failing->getFailureMessage().find("no room for the histogram") != String::npos);
        QVERIFY_THROWS_EXCEPTION(Exception,
            Histogram::computeAsync(
                image, -1, [](Histogram) {}, scheduler));
    }

    void equalizesTwoTones()
    {
        const Histogram histogram = Histogram::compute(twoTones(64, 64));
        const Stack<float> cumulative = histogram.getCumulativeHistogram(RED);
        QCOMPARE(cumulative[63], 0.0f);
        QCOMPARE(cumulative[64], 0.75f);
        QCOMPARE(cumulative[255], 1.0f);
        // The darkest tone present goes to black, the brightest to white, and nothing else moves them apart.
        const Curve curve = histogram.computeEqualizingCurve(RED);
        QCOMPARE(curve.getInterpolation(), CurveInterpolation::Linear);
        QVERIFY(curve.getPointCount() <= Histogram::MAX_EQUALIZING_POINTS);
        const auto table = curve.makeByteTable();
        QCOMPARE(int(table[64]), 0);
        QCOMPARE(int(table[192]), 255);
        // Fine histograms keep their points a tone step apart, so the curve stays valid, and still split the tones.
        const BitmapImpl<Rgb> fine(
            4, 1, Array<Rgb> { { 0.3f, 0, 0, 1 }, { 0.3f, 0, 0, 1 }, { 0.31f, 0, 0, 1 }, { 0.31f, 0, 0, 1 } });
        const Curve split = Histogram::compute(fine, 1024).computeEqualizingCurve(RED);
        QVERIFY(split(0.3f) < 0.01f && split(0.31f) > 0.99f);
        // Evenly spread tones need no change; a single tone or nothing counted leaves the identity.
        BitmapImpl<RgbaBytes> ramp(256, 4);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 256; ++x)
                ramp.at(x, y) = { std::uint8_t(x), 0, 0, 255 };
        const Curve flat = Histogram::compute(ramp).computeEqualizingCurve(RED);
        QVERIFY(std::abs(flat.evaluate(0.5) - 0.5) < 1.0 / 255.0);
        const Curve identity(DefaultCurveType::Identity, CurveInterpolation::Linear);
        QCOMPARE(Histogram::compute(ramp).computeEqualizingCurve(GREEN), identity);
        QCOMPARE(Histogram().computeEqualizingCurve(RED), identity);
        QCOMPARE(Histogram().getCumulativeHistogram(), Stack<float>(256, 0.0f));
    }
};

QTEST_GUILESS_MAIN(TestHistogram)
#include "tst_Histogram.moc"
