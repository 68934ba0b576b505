#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/styles/MarlixStyle.h>

#include <QApplication>
#include <QStyleFactory>
#include <QTest>

#include <memory>
#include <vector>

#ifndef MARLIX_PLUGIN_DIR
#error "The build names the folder of the style plugin in MARLIX_PLUGIN_DIR"
#endif

class tst_StylePlugin : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void styleArgumentPicksTheLook();
    void createsStyles_data();
    void createsStyles();
};

void tst_StylePlugin::styleArgumentPicksTheLook()
{
    // main() started the application with "-style marlix", as a user would on their own tool.
    QVERIFY(qobject_cast<Marlix::MarlixOriginalStyle*>(QApplication::style()));
    QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(0x44, 0x44, 0x44));
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(0x4E, 0x7D, 0xBA));
}

void tst_StylePlugin::createsStyles_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("original");
    QTest::addColumn<int>("toolTipMaximumWidth");

    QTest::newRow("marlix") << QStringLiteral("marlix") << true << 300;
    QTest::newRow("marlix-plain") << QStringLiteral("marlix-plain") << false << 0;
}

void tst_StylePlugin::createsStyles()
{
    QFETCH(QString, key);
    QFETCH(bool, original);
    QFETCH(int, toolTipMaximumWidth);

    const std::unique_ptr<QStyle> style(QStyleFactory::create(key));
    QVERIFY(style);
    QVERIFY(qobject_cast<Marlix::MarlixStyle*>(style.get()));
    QCOMPARE(qobject_cast<Marlix::MarlixOriginalStyle*>(style.get()) != nullptr, original);
    QCOMPARE(style->pixelMetric(QStyle::PixelMetric(Marlix::MarlixStyle::PM_ToolTipMaximumWidth)), toolTipMaximumWidth);
}

int main(int argc, char** argv)
{
    qputenv("QT_PLUGIN_PATH", QByteArrayLiteral(MARLIX_PLUGIN_DIR));
    std::vector<char*> arguments(argv, argv + argc);
    char styleOption[] = "-style";
    char styleName[] = "marlix";
    arguments.push_back(styleOption);
    arguments.push_back(styleName);
    int applicationArgc = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    QApplication application(applicationArgc, arguments.data());
    tst_StylePlugin test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_StylePlugin.moc"
