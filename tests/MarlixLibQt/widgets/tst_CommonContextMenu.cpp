#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>

#include "MarlixLibQt/widgets/editors/EditorTesting.h"

using Marlix::Widgets::CommonContextMenuOwner;
using namespace Marlix::Widgets::Testing;

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
                    if (ok)
                        setNumber(parsed);
                    return ok;
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

} // namespace

class tst_CommonContextMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QGuiApplication::clipboard()->clear();
    }

    void cleanup()
    {
        if (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    void entriesApplyAsTheyShould_data()
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

    void entriesApplyAsTheyShould()
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
        const auto find = [menu](const char* name) { return menu->findChild<QAction*>(QString::fromLatin1(name)); };
        QAction* reset = find(CommonContextMenuOwner::RESET_OBJECT_NAME);
        QAction* copy = find(CommonContextMenuOwner::COPY_OBJECT_NAME);
        QAction* paste = find(CommonContextMenuOwner::PASTE_OBJECT_NAME);
        QVERIFY(reset && copy && paste);
        QCOMPARE(reset->text(), QStringLiteral("Reset to default"));
        QCOMPARE(copy->text(), QStringLiteral("Copy"));
        QCOMPARE(paste->text(), QStringLiteral("Paste"));
        QTEST(reset->isEnabled(), "resetEnabled");
        QTEST(copy->isEnabled(), "copyEnabled");
        QTEST(paste->isEnabled(), "pasteEnabled");
    }

    void entryClicked_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<double>("expected");
        QTest::addColumn<QString>("expectedClipboard");

        const QString reset = QString::fromLatin1(CommonContextMenuOwner::RESET_OBJECT_NAME);
        const QString copy = QString::fromLatin1(CommonContextMenuOwner::COPY_OBJECT_NAME);
        const QString paste = QString::fromLatin1(CommonContextMenuOwner::PASTE_OBJECT_NAME);
        QTest::newRow("reset") << reset << "" << DEFAULT_VALUE << "";
        // The whole value is copied, whatever part of the text is selected.
        QTest::newRow("copy") << copy << "" << 2.75 << "2.75";
        QTest::newRow("paste a number") << paste << "7.5" << 7.5 << "7.5";
        QTest::newRow("paste with blanks and line break") << paste << "  -3\n" << -3.0 << "  -3\n";
        QTest::newRow("paste of no number changes nothing") << paste << "seven" << 2.75 << "seven";
        QTest::newRow("paste with trailing text changes nothing") << paste << "7.5 m/s" << 2.75 << "7.5 m/s";
    }

    void entryClicked()
    {
        QFETCH(QString, entry);
        QFETCH(QString, clipboard);
        QFETCH(double, expected);

        NumberField field;
        field.show();
        QVERIFY(QTest::qWaitForWindowExposed(&field));
        field.setNumber(2.75);
        field.setSelection(0, 1);
        if (!clipboard.isEmpty())
            QGuiApplication::clipboard()->setText(clipboard);
        const int writesBefore = field.writes;

        QMenu* menu = rightClick(field);
        QVERIFY(menu);
        clickMenuEntry(*menu, entry.toLatin1().constData());

        QCOMPARE(field.number, expected);
        QCOMPARE(field.writes - writesBefore, expected == 2.75 ? 0 : 1);
        QTEST(QGuiApplication::clipboard()->text(), "expectedClipboard");
        QVERIFY(!QApplication::activePopupWidget());
    }

    void customPolicyKeepsTheWidgetsOwnMenu()
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
};

QTEST_MAIN(tst_CommonContextMenu)
#include "tst_CommonContextMenu.moc"
