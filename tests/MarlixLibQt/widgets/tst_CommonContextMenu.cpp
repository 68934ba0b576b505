#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>

using Marlix::Widgets::CommonContextMenuOwner;

namespace {

constexpr double DEFAULT_VALUE = 1.0;

/// A number field built the way the library's editors use the menu: value, default, text conversion, read-only.
class NumberField : public QLineEdit, public CommonContextMenuOwner
{
public:
    explicit NumberField(bool withTextFunctions = true)
        : CommonContextMenuOwner(this)
    {
        setResetFunction([this] { setNumber(DEFAULT_VALUE); });
        setIsDefaultFunction([this] { return number == DEFAULT_VALUE; });
        if (withTextFunctions) {
            setTextFunctions([this] { return QString::number(number); },
                [this](const QString& text) {
                    bool ok = false;
                    const double parsed = text.toDouble(&ok);
                    if (!ok)
                        return false;
                    setNumber(parsed);
                    return true;
                });
        }
        setEditableFunction([this] { return !isReadOnly(); });
        setNumber(DEFAULT_VALUE);
    }

    void setNumber(double value)
    {
        number = value;
        ++writes;
        setText(QString::number(value));
    }

    double number = 0.0;
    int writes = 0;
};

/// Right-clicks the widget and returns the menu that opened. QTest's mouse clicks do not make the platform's
/// context-menu event, so the event is sent as the window system delivers it after a right click.
QMenu* rightClick(QWidget& widget)
{
    const QPoint position = widget.rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
    QApplication::sendEvent(&widget, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

QAction* findAction(QMenu& menu, const char* objectName)
{
    return menu.findChild<QAction*>(QString::fromLatin1(objectName));
}

/// Clicks a menu entry where it is drawn.
void clickEntry(QMenu& menu, QAction& action)
{
    const QPoint position = menu.actionGeometry(&action).center();
    QTest::mouseMove(&menu, position);
    QTest::mouseClick(&menu, Qt::LeftButton, {}, position);
}

} // namespace

class tst_CommonContextMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void entriesApplyAsTheyShould_data();
    void entriesApplyAsTheyShould();
    void resetSetsTheDefault();
    void copyPutsTheValueOnTheClipboard();
    void paste_data();
    void paste();
    void customPolicyKeepsTheWidgetsOwnMenu();
};

void tst_CommonContextMenu::init()
{
    QGuiApplication::clipboard()->clear();
}

void tst_CommonContextMenu::cleanup()
{
    if (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

void tst_CommonContextMenu::entriesApplyAsTheyShould_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<bool>("withTextFunctions");
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<bool>("resetEnabled");
    QTest::addColumn<bool>("copyEnabled");
    QTest::addColumn<bool>("pasteEnabled");

    QTest::newRow("changed value, clipboard text") << 5.0 << false << true << "3" << true << true << true;
    QTest::newRow("at default: nothing to reset") << DEFAULT_VALUE << false << true << "3" << false << true << true;
    QTest::newRow("empty clipboard: nothing to paste") << 5.0 << false << true << "" << true << true << false;
    QTest::newRow("read-only: copy only") << 5.0 << true << true << "3" << false << true << false;
    QTest::newRow("no text functions") << 5.0 << false << false << "3" << true << false << false;
}

void tst_CommonContextMenu::entriesApplyAsTheyShould()
{
    QFETCH(double, value);
    QFETCH(bool, readOnly);
    QFETCH(bool, withTextFunctions);
    QFETCH(QString, clipboard);

    NumberField field(withTextFunctions);
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    field.setNumber(value);
    field.setReadOnly(readOnly);
    if (!clipboard.isEmpty())
        QGuiApplication::clipboard()->setText(clipboard);

    QMenu* menu = rightClick(field);
    QVERIFY(menu);
    QCOMPARE(menu->objectName(), QString::fromLatin1(CommonContextMenuOwner::MENU_OBJECT_NAME));
    QAction* reset = findAction(*menu, CommonContextMenuOwner::RESET_OBJECT_NAME);
    QAction* copy = findAction(*menu, CommonContextMenuOwner::COPY_OBJECT_NAME);
    QAction* paste = findAction(*menu, CommonContextMenuOwner::PASTE_OBJECT_NAME);
    QVERIFY(reset && copy && paste);
    QCOMPARE(reset->text(), QStringLiteral("Reset to default"));
    QCOMPARE(copy->text(), QStringLiteral("Copy"));
    QCOMPARE(paste->text(), QStringLiteral("Paste"));
    QTEST(reset->isEnabled(), "resetEnabled");
    QTEST(copy->isEnabled(), "copyEnabled");
    QTEST(paste->isEnabled(), "pasteEnabled");

    // A greyed-out entry does nothing even when clicked.
    const double before = field.number;
    for (QAction* action : { reset, paste }) {
        if (!action->isEnabled()) {
            clickEntry(*menu, *action);
            QCOMPARE(field.number, before);
        }
    }
}

void tst_CommonContextMenu::resetSetsTheDefault()
{
    NumberField field;
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    field.setNumber(42.0);
    const int writesBefore = field.writes;

    QMenu* menu = rightClick(field);
    QVERIFY(menu);
    clickEntry(*menu, *findAction(*menu, CommonContextMenuOwner::RESET_OBJECT_NAME));

    QCOMPARE(field.number, DEFAULT_VALUE);
    QCOMPARE(field.writes, writesBefore + 1);
    QVERIFY(!QApplication::activePopupWidget());
}

void tst_CommonContextMenu::copyPutsTheValueOnTheClipboard()
{
    NumberField field;
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    field.setNumber(2.75);
    // The whole value is copied, whatever part of the text is selected.
    field.setSelection(0, 1);

    QMenu* menu = rightClick(field);
    QVERIFY(menu);
    clickEntry(*menu, *findAction(*menu, CommonContextMenuOwner::COPY_OBJECT_NAME));

    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("2.75"));
    QCOMPARE(field.number, 2.75);
}

void tst_CommonContextMenu::paste_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<double>("expected");
    QTest::addColumn<int>("expectedWrites");

    QTest::newRow("number") << "7.5" << 7.5 << 1;
    QTest::newRow("blanks and line break around it") << "  -3\n" << -3.0 << 1;
    QTest::newRow("not a number changes nothing") << "seven" << 4.0 << 0;
    QTest::newRow("number with trailing text changes nothing") << "7.5 m/s" << 4.0 << 0;
}

void tst_CommonContextMenu::paste()
{
    QFETCH(QString, clipboard);
    QFETCH(double, expected);
    QFETCH(int, expectedWrites);

    NumberField field;
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    field.setNumber(4.0);
    const int writesBefore = field.writes;
    QGuiApplication::clipboard()->setText(clipboard);

    QMenu* menu = rightClick(field);
    QVERIFY(menu);
    QAction* paste = findAction(*menu, CommonContextMenuOwner::PASTE_OBJECT_NAME);
    QVERIFY(paste->isEnabled());
    clickEntry(*menu, *paste);

    QCOMPARE(field.number, expected);
    QCOMPARE(field.writes - writesBefore, expectedWrites);
    // The clipboard is only read.
    QCOMPARE(QGuiApplication::clipboard()->text(), clipboard);
}

void tst_CommonContextMenu::customPolicyKeepsTheWidgetsOwnMenu()
{
    NumberField field;
    field.setContextMenuPolicy(Qt::CustomContextMenu);
    field.show();
    QVERIFY(QTest::qWaitForWindowExposed(&field));
    int requests = 0;
    connect(&field, &QWidget::customContextMenuRequested, this, [&requests] { ++requests; });

    QVERIFY(!rightClick(field));
    QCOMPARE(requests, 1);
}

QTEST_MAIN(tst_CommonContextMenu)
#include "tst_CommonContextMenu.moc"
