#include <MarlixLib/math/Range.h>

#include <QtTest/QTest>

using namespace Marlix;

class TestRange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clampAndContains_data();
    void clampAndContains();
    void unionAndIntersection();
    void includeWidens();
};

void TestRange::clampAndContains_data()
{
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("clamped");
    QTest::addColumn<bool>("contained");
    QTest::newRow("inside") << 0.0 << 1.0 << 0.25 << 0.25 << true;
    QTest::newRow("on the minimum") << 0.0 << 1.0 << 0.0 << 0.0 << true;
    QTest::newRow("on the maximum") << 0.0 << 1.0 << 1.0 << 1.0 << true;
    QTest::newRow("below") << -2.0 << 3.0 << -5.0 << -2.0 << false;
    QTest::newRow("above") << -2.0 << 3.0 << 5.0 << 3.0 << false;
    QTest::newRow("single point") << 2.0 << 2.0 << 7.0 << 2.0 << false;
    QTest::newRow("empty keeps the value") << 1.0 << 0.0 << 0.5 << 0.5 << false;
}

void TestRange::clampAndContains()
{
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(double, value);
    QFETCH(double, clamped);
    QFETCH(bool, contained);
    const Range<double> range(minimum, maximum);
    QCOMPARE(range.clamp(value), clamped);
    QCOMPARE(range.contains(value), contained);
}

void TestRange::unionAndIntersection()
{
    constexpr Range<int> a(0, 10), b(5, 20), c(30, 40), empty(1, 0);
    static_assert(a.united(b) == Range<int>(0, 20));
    static_assert(a.intersected(b) == Range<int>(5, 10));
    QVERIFY(a.intersected(c).isEmpty());
    QCOMPARE(empty.united(c), c);
    QCOMPARE(c.united(empty), c);
}

void TestRange::includeWidens()
{
    Range<float> range(1.0f, 0.0f);
    range.include(3.0f);
    QCOMPARE(range, Range<float>(3.0f, 3.0f));
    range.include(-1.0f);
    QCOMPARE(range, Range<float>(-1.0f, 3.0f));
}

QTEST_GUILESS_MAIN(TestRange)
#include "tst_Range.moc"
