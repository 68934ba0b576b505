#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/MessageBox.h>
#include <MarlixLibQt/lister/ListerDialog.h>
#include <MarlixLibQt/widgets/color/ColorPicker.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixTestScene/TestScene.h>

#include <QLabel>
#include <QLocale>
#include <QTest>
#include <QToolButton>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

enum class Probe
{
    UndockButton,
    MessageBoxButtons,
    ListerCountOne,
    ListerCountFive,
    ColorPickerRow
};

QString listerCount(std::size_t objects)
{
    const auto scene = makeSharedPtr<EntityGraphTracker>();
    for (std::size_t i = 0; i < objects; ++i)
        scene->addEntity(TestScene::materialClass().create());
    ListerDialog dialog(scene, TestScene::materialClass(),
        makeSharedPtr<DefaultPropertySheetHost>(scene, nullptr, makeSharedPtr<UndoManager>()));
    return dialog.getPanel()->getCountLabel()->text();
}

/// The text that a widget made now shows.
QString probe(Probe which)
{
    switch (which) {
    case Probe::UndockButton:
        return Dock(QStringLiteral("Translated")).header()->button()->toolTip();
    case Probe::MessageBoxButtons: {
        QString texts;
        runOkCancelMessageBoxImpl([&](ArrayView<const MessageBoxButton> buttons) {
            texts = buttons[0].text + QLatin1Char('/') + buttons[1].text;
        });
        return texts;
    }
    case Probe::ListerCountOne:
        return listerCount(1);
    case Probe::ListerCountFive:
        return listerCount(5);
    case Probe::ColorPickerRow: {
        RgbColorPicker picker(makeSharedPtr<VariableModel<QColorExtended>>(QColorExtended(QColor(Qt::red))),
            makeSharedPtr<VariableModel<long long>>(0));
        return picker.getRows()[0]->getLabel()->text();
    }
    }
    return {};
}

const QLocale GERMAN(QLocale::German, QLocale::Germany);
const QLocale ENGLISH(QLocale::English, QLocale::UnitedStates);

} // namespace

/// The library's texts in the language that start-up or the host chose, in widgets made afterwards.
class tst_Translations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void textsFollowTheLanguage_data();
    void textsFollowTheLanguage();
    void localesWithoutCatalogueGiveEnglish_data();
    void localesWithoutCatalogueGiveEnglish();
    void startupTakesTheUserLocaleAndTheLastStopRemovesIt();
};

void tst_Translations::initTestCase()
{
    LibQt::startup("Translations");
}

void tst_Translations::cleanupTestCase()
{
    if (LibQt::isStarted()) // not after a failure between a stop and the start again
        LibQt::shutdown();
}

void tst_Translations::textsFollowTheLanguage_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("german");
    QTest::newRow("dock header's undock button") << int(Probe::UndockButton) << "Undock"
                                                 << "Abdocken";
    QTest::newRow("message box buttons") << int(Probe::MessageBoxButtons) << "OK/Cancel"
                                         << "OK/Abbrechen";
    QTest::newRow("lister count, one") << int(Probe::ListerCountOne) << "1 object"
                                       << "1 Objekt";
    QTest::newRow("lister count, five") << int(Probe::ListerCountFive) << "5 objects"
                                        << "5 Objekte";
    QTest::newRow("colour picker row") << int(Probe::ColorPickerRow) << "Red"
                                       << "Rot";
}

void tst_Translations::textsFollowTheLanguage()
{
    QFETCH(int, which);
    QFETCH(QString, english);
    QFETCH(QString, german);
    QVERIFY(LibQt::setLanguage(GERMAN));
    QCOMPARE(probe(Probe(which)), german);
    QVERIFY(LibQt::setLanguage(ENGLISH));
    QCOMPARE(probe(Probe(which)), english);
}

void tst_Translations::localesWithoutCatalogueGiveEnglish_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("French") << QLocale(QLocale::French, QLocale::France);
    QTest::newRow("Japanese") << QLocale(QLocale::Japanese, QLocale::Japan);
    QTest::newRow("C") << QLocale::c();
}

void tst_Translations::localesWithoutCatalogueGiveEnglish()
{
    QFETCH(QLocale, locale);
    QVERIFY(LibQt::setLanguage(GERMAN));
    QVERIFY(!LibQt::setLanguage(locale));
    QCOMPARE(probe(Probe::UndockButton), QStringLiteral("Undock"));
    QCOMPARE(probe(Probe::ListerCountOne), QStringLiteral("1 object"));
}

void tst_Translations::startupTakesTheUserLocaleAndTheLastStopRemovesIt()
{
    const QLocale before;
    QLocale::setDefault(GERMAN);
    LibQt::shutdown();
    LibQt::startup("Translations");
    QCOMPARE(probe(Probe::UndockButton), QStringLiteral("Abdocken"));
    LibQt::shutdown();
    QLocale::setDefault(before);
    QCOMPARE(probe(Probe::UndockButton), QStringLiteral("Undock"));
    QVERIFY_THROWS_EXCEPTION(Exception, LibQt::setLanguage(GERMAN));
    LibQt::startup("Translations");
}

QTEST_MAIN(tst_Translations)
#include "tst_Translations.moc"
