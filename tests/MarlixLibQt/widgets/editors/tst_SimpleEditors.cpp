#include <MarlixLibQt/widgets/editors/Address.h>
#include <MarlixLibQt/widgets/editors/CheckBox.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Path.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"
#include "MarlixLibQt/widgets/editors/EditorTesting.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::Widgets::Testing;

namespace {

const Array<String> FRUIT_LABELS { "Apple", "Banana", "Cherry", "Damson" };
const Array<std::int64_t> FRUIT_VALUES { 10, 20, 30, 40 };

struct Fruits
{
    SharedPtr<ListViewModel<String>> labels = makeSharedPtr<ListViewModel<String>>(FRUIT_LABELS);
    SharedPtr<RecordingModel<std::int64_t>> value = makeSharedPtr<RecordingModel<std::int64_t>>(20);
    SharedPtr<ListViewModel<std::int64_t>> values = makeSharedPtr<ListViewModel<std::int64_t>>(FRUIT_VALUES);

    ComboBox* make(QWidget* parent = nullptr) const { return new ComboBox(labels, value, values, 10, parent); }
};

} // namespace

class tst_SimpleEditors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    void checkBox()
    {
        auto model = makeSharedPtr<RecordingModel<bool>>(false);
        CheckBox box(model, true, QStringLiteral("Visible"));
        CheckBox other(model, false, QString());
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QTest::mouseClick(&box, Qt::LeftButton, {}, box.rect().center());
        QCOMPARE(model->get(), true);
        QVERIFY(other.isChecked());

        QVERIFY(box.copyToClipboard());
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("true"));
        QVERIFY(box.pasteText(QStringLiteral("No")));
        QVERIFY(!other.isChecked());
        QVERIFY(!box.pasteText(QStringLiteral("maybe")));
        QVERIFY(box.resetToDefault());
        QCOMPARE(model->get(), true);
        // Showing the model's value is no user edit: no write back.
        QCOMPARE(model->sets, 3);
    }

    void comboBoxChoosingAnEntryWritesItsValue()
    {
        Fruits fruits;
        QScopedPointer<ComboBox> box(fruits.make());
        box->show();
        QVERIFY(QTest::qWaitForWindowExposed(box.data()));
        QCOMPARE(box->currentText(), QStringLiteral("Banana"));
        QSignalSpy focus(box.data(), &ComboBox::focusChanged);

        QTest::mouseClick(box.data(), Qt::LeftButton, {}, box->rect().center());
        QAbstractItemView* list = box->view();
        QTRY_VERIFY(list->isVisible());
        QCOMPARE(focus.count(), 1);
        // The list ignores a release that follows its opening too closely, so the entry is chosen with the keys.
        QCOMPARE(list->currentIndex().row(), 1);
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
        QVERIFY(!list->isVisible());
        QCOMPARE(focus.count(), 2);
        QCOMPARE(focus.at(0).at(0).toBool(), true);
        QCOMPARE(focus.at(1).at(0).toBool(), false);
        QCOMPARE(fruits.value->get(), 30);
        QCOMPARE(fruits.value->sets, 1);
        QCOMPARE(box->currentText(), QStringLiteral("Cherry"));
    }

    void comboBoxShowsModelValue_data()
    {
        QTest::addColumn<std::int64_t>("value");
        QTest::addColumn<QString>("expectedText");

        QTest::newRow("value of the last entry") << std::int64_t(40) << "Damson";
        QTest::newRow("no entry has the value") << std::int64_t(2) << "";
    }

    void comboBoxShowsModelValue()
    {
        QFETCH(std::int64_t, value);
        Fruits fruits;
        QScopedPointer<ComboBox> box(fruits.make());

        fruits.value->set(value);
        QTEST(box->currentText(), "expectedText");

        // New labels keep the choice by value.
        const Array<String> renamed { "A", "B", "C", "D" };
        fruits.labels->set(renamed);
        QCOMPARE(box->currentIndex(), box->entryOfValue(value));
        QCOMPARE(fruits.value->sets, 1);
    }

    void comboBoxWheel_data()
    {
        QTest::addColumn<bool>("focused");
        QTest::newRow("without focus the view scrolls") << false;
        QTest::newRow("with focus the choice changes") << true;
    }

    void comboBoxWheel()
    {
        QFETCH(bool, focused);
        Fruits fruits;
        QScrollArea area;
        auto* sheet = new QWidget;
        auto* layout = new QVBoxLayout(sheet);
        auto* other = new QLineEdit(sheet);
        layout->addWidget(other);
        ComboBox* box = fruits.make(sheet);
        layout->addWidget(box);
        layout->addSpacing(3000);
        area.setWidget(sheet);
        area.resize(300, 200);
        area.show();
        QVERIFY(QTest::qWaitForWindowExposed(&area));
        QApplication::setActiveWindow(&area);
        if (focused)
            box->setFocus();
        else
            other->setFocus();
        const int scrollBefore = area.verticalScrollBar()->value();

        sendWheel(box, -120);

        if (focused) {
            QCOMPARE(fruits.value->get(), 30);
            QCOMPARE(area.verticalScrollBar()->value(), scrollBefore);
        } else {
            QCOMPARE(fruits.value->get(), 20);
            QCOMPARE(fruits.value->sets, 0);
            QVERIFY(area.verticalScrollBar()->value() > scrollBefore);
        }
    }

    void comboBoxPopupDirection_data()
    {
        QTest::addColumn<ComboBox::PopupDirection>("direction");
        QTest::newRow("up") << ComboBox::PopupDirection::Up;
        QTest::newRow("over") << ComboBox::PopupDirection::Over;
    }

    void comboBoxPopupDirection()
    {
        QFETCH(ComboBox::PopupDirection, direction);
        Fruits fruits;
        QWidget window;
        ComboBox* box = fruits.make(&window);
        box->move(10, 10);
        window.resize(200, 60);
        // Room above and below, so that neither direction has to give way to the screen's edge.
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        window.move(screen.center() - QPoint(100, 30));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        box->setPopupDirection(direction);

        QTest::mouseClick(box, Qt::LeftButton, {}, box->rect().center());
        QWidget* container = box->view()->parentWidget();
        QVERIFY(container && container->isVisible());

        const QRect boxRect(box->mapToGlobal(QPoint(0, 0)), box->size());
        const QRect list = container->geometry();
        if (direction == ComboBox::PopupDirection::Up)
            QCOMPARE(list.bottom() + 1, boxRect.top());
        else
            QCOMPARE(list.top(), boxRect.top());
        QVERIFY(list.intersects(QRect(boxRect.left(), list.top(), boxRect.width(), 1)));
    }

    void comboBoxToolTip()
    {
        Fruits fruits;
        QScopedPointer<ComboBox> box(fruits.make());
        QVERIFY(box->toolTip().isEmpty());

        box->setToolTipBehavior(ComboBox::ToolTipBehavior::CurrentText);
        QCOMPARE(box->toolTip(), QStringLiteral("Banana"));
        fruits.value->set(40);
        QCOMPARE(box->toolTip(), QStringLiteral("Damson"));

        box->setToolTipBehavior(ComboBox::ToolTipBehavior::NoToolTip);
        QVERIFY(box->toolTip().isEmpty());
    }

    void comboBoxDropDownWidth()
    {
        Fruits fruits;
        const Array<String> labels { "A", "A label much longer than the box is wide, to widen the list" };
        fruits.labels->set(labels);
        QScopedPointer<ComboBox> box(fruits.make());
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(3);
        const int widest = box->view()->fontMetrics().horizontalAdvance(QString::fromStdString(labels[1]));

        box->setDropDownWidthBehavior(ComboBox::DropDownWidthBehavior::BoxWidth);
        QCOMPARE(box->view()->minimumWidth(), box->sizeHint().width());
        QVERIFY(box->view()->minimumWidth() < widest);

        box->setDropDownWidthBehavior(ComboBox::DropDownWidthBehavior::WidestEntry);
        QVERIFY(box->view()->minimumWidth() >= widest);
    }

    void comboBoxVirtualEnum()
    {
        const FlatMap<int, String> entries { { 5, "Five" }, { 1, "One" }, { 3, "Three" } };
        auto value = makeSharedPtr<VariableModel<std::int64_t>>(3);
        QScopedPointer<ComboBox> box(ComboBox::makeVirtualEnumDropDownImpl(entries, value, 1));

        QCOMPARE(box->count(), 3);
        QCOMPARE(box->itemText(0), QStringLiteral("One"));
        QCOMPARE(box->itemText(2), QStringLiteral("Five"));
        QCOMPARE(box->currentText(), QStringLiteral("Three"));

        // The keyboard walks the entries in value order and writes the values.
        box->show();
        QVERIFY(QTest::qWaitForWindowExposed(box.data()));
        box->setFocus();
        QTest::keyClick(box.data(), Qt::Key_Down);
        QCOMPARE(value->get(), 5);

        QMenu* menu = rightClick(*box);
        QVERIFY(menu);
        clickMenuEntry(*menu, CommonContextMenuOwner::RESET_OBJECT_NAME);
        QCOMPARE(value->get(), 1);
        QCOMPARE(box->currentText(), QStringLiteral("One"));
    }

    void comboBoxPaste_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::int64_t>("expected");
        QTest::newRow("label") << "Cherry" << std::int64_t(30);
        QTest::newRow("label in other case") << "damson" << std::int64_t(40);
        QTest::newRow("value") << "10" << std::int64_t(10);
        QTest::newRow("unknown label changes nothing") << "Elder" << std::int64_t(20);
    }

    void comboBoxPaste()
    {
        QFETCH(QString, text);
        QFETCH(std::int64_t, expected);
        Fruits fruits;
        QScopedPointer<ComboBox> box(fruits.make());
        QCOMPARE(box->pasteText(text), expected != 20);
        QCOMPARE(fruits.value->get(), expected);
        QCOMPARE(fruits.value->sets, expected != 20 ? 1 : 0);
        QCOMPARE(box->currentIndex(), box->entryOfValue(expected));
    }

    void lineEditReadOnlyPalette()
    {
        const QPalette defaults = QApplication::palette();
        // Otherwise the test could not tell the two states apart.
        QVERIFY(defaults.color(QPalette::Base) != defaults.color(QPalette::Window));

        LineEdit edit(nullptr, "name", LineEdit::Option::ReadOnly);
        for (const bool readOnly : { true, false, true }) {
            edit.setReadOnly(readOnly);
            const QColor expected = defaults.color(readOnly ? QPalette::Window : QPalette::Base);
            for (QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
                QCOMPARE(edit.palette().color(group, QPalette::Base), expected);
        }
    }

    void lineEditWrites_data()
    {
        QTest::addColumn<bool>("whileTyping");
        QTest::addColumn<int>("setsAfterTyping");
        QTest::addColumn<int>("setsAfterReturn");

        QTest::newRow("on editing finished") << false << 0 << 1;
        QTest::newRow("while typing") << true << 3 << 3;
    }

    void lineEditWrites()
    {
        QFETCH(bool, whileTyping);
        auto model = makeSharedPtr<RecordingModel<String>>("Key");
        LineEdit edit(model, "", whileTyping ? Flags(LineEdit::Option::UpdateWhileTyping) : Flags<LineEdit::Option>());
        edit.show();
        QVERIFY(QTest::qWaitForWindowExposed(&edit));
        QCOMPARE(edit.text(), QStringLiteral("Key"));

        edit.setCursorPosition(3);
        QTest::keyClicks(&edit, QStringLiteral("Lit"));
        QTEST(model->sets, "setsAfterTyping");
        QTest::keyClick(&edit, Qt::Key_Return);
        QTEST(model->sets, "setsAfterReturn");
        QCOMPARE(model->get(), String("KeyLit"));

        // Confirming again without a change writes nothing.
        const int sets = model->sets;
        QTest::keyClick(&edit, Qt::Key_Return);
        QCOMPARE(model->sets, sets);

        // A change from elsewhere is shown (UTF-8 in the model) and not written back.
        model->set("Caf\xC3\xA9");
        QCOMPARE(edit.text(), QStringLiteral("Caf\u00E9"));
        QCOMPARE(model->sets, sets + 1);
    }

    void pathTypedAndBrowsed()
    {
        auto model = makeSharedPtr<RecordingModel<Io::Path>>(Io::Path("/scenes/old.scn"));
        UserData userData;
        userData.set(String(UiPathFlags::ATTRIBUTE), UiPathFlags { UiPathFlags::Mode::SaveFile, "Scenes (*.scn)" });
        Array<std::pair<UiPathFlags, Optional<Io::Path>>> calls;
        // The first browse picks a file, the second is cancelled.
        Path path(
            model,
            [&calls](const UiPathFlags& flags, Optional<Io::Path> current) -> Optional<Io::Path> {
                calls.emplace_back(flags, current);
                return calls.size() == 1 ? Optional<Io::Path>(Io::Path("/scenes/picked.scn")) : std::nullopt;
            },
            userData);
        path.show();
        QVERIFY(QTest::qWaitForWindowExposed(&path));
        QCOMPARE(path.lineEdit()->text(), QStringLiteral("/scenes/old.scn"));

        path.lineEdit()->selectAll();
        QTest::keyClicks(path.lineEdit(), QStringLiteral("/scenes/typed.scn"));
        QTest::keyClick(path.lineEdit(), Qt::Key_Return);
        QCOMPARE(model->get(), Io::Path("/scenes/typed.scn"));

        QToolButton* browse = path.browseButton();
        for (int i = 0; i < 2; ++i)
            QTest::mouseClick(browse, Qt::LeftButton, {}, browse->rect().center());
        QCOMPARE(calls.size(), std::size_t(2));
        QCOMPARE(calls[0].first.mode, UiPathFlags::Mode::SaveFile);
        QCOMPARE(calls[0].first.filter, String("Scenes (*.scn)"));
        QCOMPARE(calls[0].second, Optional<Io::Path>(Io::Path("/scenes/typed.scn")));
        QCOMPARE(model->get(), Io::Path("/scenes/picked.scn"));
        QCOMPARE(path.lineEdit()->text(), QStringLiteral("/scenes/picked.scn"));
        QCOMPARE(model->sets, 2);

        Path withoutBrowse(model, nullptr, UserData());
        withoutBrowse.show();
        QVERIFY(!withoutBrowse.browseButton()->isVisible());
    }

    void pathRefusesAnUnknownMode()
    {
        UserData userData;
        userData.set(String(UiPathFlags::ATTRIBUTE), UiPathFlags { static_cast<UiPathFlags::Mode>(7), "" });
        QVERIFY_THROWS_EXCEPTION(StopException, Path(nullptr, nullptr, userData));
    }

    void addressPartsAndClicks()
    {
        auto model = makeSharedPtr<VariableModel<QList<QString>>>(
            QList<QString> { QStringLiteral("Scene"), QStringLiteral("Lights"), QStringLiteral("Key") });
        Address address(model);
        // The host goes up to the clicked level, which rebuilds the bar under the button being clicked.
        connect(&address, &Address::clicked, &address, [&model](int index) {
            QList<QString> parts = model->get();
            parts.resize(index + 1);
            model->set(parts);
        });
        QSignalSpy spy(&address, &Address::clicked);
        address.show();
        QVERIFY(QTest::qWaitForWindowExposed(&address));

        QCOMPARE(address.partCount(), 3);
        QCOMPARE(address.partButton(1)->text(), QStringLiteral("Lights"));
        QVERIFY(address.partButton(1)->geometry().left() > address.partButton(0)->geometry().right());
        QVERIFY(address.partButton(2)->font().bold());

        QAbstractButton* lights = address.partButton(1);
        QTest::mouseClick(lights, Qt::LeftButton, {}, lights->rect().center());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 1);
        QCOMPARE(model->get().size(), 2);
        QCOMPARE(address.partCount(), 2);
        QVERIFY(address.partButton(1)->font().bold());
        QVERIFY(!address.partButton(2));

        model->set({});
        QCOMPARE(address.partCount(), 0);
    }
};

QTEST_MAIN(tst_SimpleEditors)
#include "tst_SimpleEditors.moc"
