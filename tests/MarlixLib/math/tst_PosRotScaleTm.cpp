#include <MarlixLib/math/PosRotScaleTm.h>

#include <QtTest/QTest>

#include <numbers>
#include <random>

using namespace Marlix;

Q_DECLARE_METATYPE(Marlix::PosRotScaleTm)

namespace {
constexpr double PI = std::numbers::pi;

PosRotScaleTm makeTm(Pos p, Vector3 r, Vector3 s, Vector3 h = {})
{
    PosRotScaleTm tm;
    tm.position = p;
    tm.rotation = r;
    tm.scale = s;
    tm.shear = h;
    return tm;
}

} // namespace

class TestPosRotScaleTm : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void singleRotationsTurnAxesCounterClockwise_data();
    void singleRotationsTurnAxesCounterClockwise();
    void partsApplyInOrderScaleShearRotateMove();
    void canonicalRoundTrip_data();
    void canonicalRoundTrip();
    void randomMatricesRoundTrip();
    void gimbalLockKeepsTheMatrix_data();
    void gimbalLockKeepsTheMatrix();
    void invalidMatricesAreErrors_data();
    void invalidMatricesAreErrors();
};

void TestPosRotScaleTm::singleRotationsTurnAxesCounterClockwise_data()
{
    // The angles about x, y and z, a direction, and where the rotation takes it.
    QTest::addColumn<QList<double>>("v");
    QTest::newRow("x turns y to z") << QList<double> { PI / 2, 0, 0, 0, 1, 0, 0, 0, 1 };
    QTest::newRow("y turns z to x") << QList<double> { 0, PI / 2, 0, 0, 0, 1, 1, 0, 0 };
    QTest::newRow("z turns x to y") << QList<double> { 0, 0, PI / 2, 1, 0, 0, 0, 1, 0 };
    QTest::newRow("z half turn") << QList<double> { 0, 0, PI, 1, 2, 3, -1, -2, 3 };
    // X first takes y to z, then Y takes z to x, then Z takes x back to y; another order would not.
    QTest::newRow("x, then y, then z") << QList<double> { PI / 2, PI / 2, PI / 2, 0, 1, 0, 0, 1, 0 };
}

void TestPosRotScaleTm::singleRotationsTurnAxesCounterClockwise()
{
    QFETCH(QList<double>, v);
    const Dir out = PosRotScaleTm::rotationMatrix({ v[0], v[1], v[2] }).transform(Dir { v[3], v[4], v[5] });
    QVERIFY((out - Dir { v[6], v[7], v[8] }).length() < 1e-12);
}

void TestPosRotScaleTm::partsApplyInOrderScaleShearRotateMove()
{
    const PosRotScaleTm tm = makeTm({ 10, 20, 30 }, { 0, 0, PI / 2 }, { 2, 3, 4 }, { 0.5, 0, 0 });
    // (1, 1, 0): scale -> (2, 3, 0); shear x += 0.5 * y -> (3.5, 3, 0); rotate z 90 -> (-3, 3.5, 0); move.
    const Pos out = tm.toMatrix().transform(Pos { 1, 1, 0 });
    QVERIFY((out - Pos { 7, 23.5, 30 }).length() < 1e-12);
    // Directions are not moved.
    QVERIFY((tm.toMatrix().transform(Dir { 1, 0, 0 }) - Dir { 0, 2, 0 }).length() < 1e-12);
}

void TestPosRotScaleTm::canonicalRoundTrip_data()
{
    QTest::addColumn<PosRotScaleTm>("tm");
    QTest::newRow("identity") << PosRotScaleTm {};
    QTest::newRow("scaled far apart") << makeTm({}, {}, { 0.001, 7, 1000 });
    QTest::newRow("mirrored in z") << makeTm({ 4, 5, 6 }, { 0.1, 0.2, 0.3 }, { 2, 3, -4 });
    QTest::newRow("all") << makeTm({ -7, 0.25, 9 }, { -2.5, 1.2, -0.7 }, { 0.5, 2, 3 }, { 0.1, 0.2, -0.3 });
    QTest::newRow("x angle pi") << makeTm({}, { PI, 0.4, 0.5 }, { 1, 2, 3 });
}

void TestPosRotScaleTm::canonicalRoundTrip()
{
    QFETCH(PosRotScaleTm, tm);
    const auto back = PosRotScaleTm::fromMatrix(tm.toMatrix());
    QVERIFY2(back.has_value(), back ? "" : back.error().c_str());
    QVERIFY(back->isNear(tm, 1e-9));
}

void TestPosRotScaleTm::randomMatricesRoundTrip()
{
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> element(-5.0, 5.0);
    int tested = 0;
    for (int i = 0; i < 2000; ++i) {
        Matrix4 m;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 4; ++c)
                m(r, c) = element(random);
        const auto tm = PosRotScaleTm::fromMatrix(m);
        if (!tm)
            continue;
        ++tested;
        QVERIFY(tm->scale.x > 0 && tm->scale.y > 0);
        QVERIFY(tm->rotation.x > -PI && tm->rotation.x <= PI);
        QVERIFY(tm->rotation.y >= -PI / 2 && tm->rotation.y <= PI / 2);
        QVERIFY(tm->rotation.z > -PI && tm->rotation.z <= PI);
        QVERIFY(tm->toMatrix().isNear(m, 1e-9));
        // Decomposing the composed matrix again gives the same parts: the decomposition is unique.
        const auto again = PosRotScaleTm::fromMatrix(tm->toMatrix());
        QVERIFY(again && again->isNear(*tm, 1e-8));
    }
    QVERIFY(tested > 1900);
}

void TestPosRotScaleTm::gimbalLockKeepsTheMatrix_data()
{
    QTest::addColumn<double>("ry");
    QTest::newRow("+90") << PI / 2;
    QTest::newRow("-90") << -PI / 2;
}

void TestPosRotScaleTm::gimbalLockKeepsTheMatrix()
{
    QFETCH(double, ry);
    const PosRotScaleTm tm = makeTm({ 1, 2, 3 }, { 0.4, ry, 0.9 }, { 1, 2, 3 }, { 0.1, 0, 0 });
    const auto back = PosRotScaleTm::fromMatrix(tm.toMatrix());
    QVERIFY(back);
    QCOMPARE(back->rotation.z, 0.0);
    QVERIFY(std::abs(back->rotation.y - ry) < 1e-9);
    QVERIFY(back->toMatrix().isNear(tm.toMatrix(), 1e-9));
}

void TestPosRotScaleTm::invalidMatricesAreErrors_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("projective") << 0;
    QTest::newRow("zero scale") << 1;
    QTest::newRow("parallel axes") << 2;
    QTest::newRow("flat") << 3;
    QTest::newRow("not a number") << 4;
}

void TestPosRotScaleTm::invalidMatricesAreErrors()
{
    QFETCH(int, kind);
    Matrix4 m = makeTm({ 1, 2, 3 }, { 0.1, 0.2, 0.3 }, { 1, 2, 3 }).toMatrix();
    switch (kind) {
    case 0:
        m(3, 2) = 0.5;
        break;
    case 1:
        for (int r = 0; r < 3; ++r)
            m(r, 0) = 0;
        break;
    case 2:
        for (int r = 0; r < 3; ++r)
            m(r, 1) = 2 * m(r, 0);
        break;
    case 3:
        for (int r = 0; r < 3; ++r)
            m(r, 2) = m(r, 0) - m(r, 1);
        break;
    case 4:
        m(1, 1) = std::numeric_limits<double>::quiet_NaN();
        break;
    }
    const auto tm = PosRotScaleTm::fromMatrix(m);
    QVERIFY(!tm);
    QVERIFY(!tm.error().empty());
}

QTEST_GUILESS_MAIN(TestPosRotScaleTm)
#include "tst_PosRotScaleTm.moc"
