#include <MarlixLibQt/widgets/editors/Address.h>
#include <MarlixLibQt/widgets/editors/CheckBox.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Path.h>

#include <MarlixLib/base/Exception.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpontaneKeyEvent>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

/// Counts the writes that reach the model, so that tests see spurious or missing writes.
template <class T> class CountingModel final : public AbstractModel<T>
{
public:
    explicit CountingModel(T value = T {})
        : value(std::move(value))
    {
    }
    T get() const override { return value; }
    void set(T newValue) override
    {
        ++sets;
        value = std::move(newValue);
        this->notifyCallbacks();
    }

    T value;
    int sets = 0;
};

const Array<String> FRUIT_LABELS { "Apple", "Banana", "Cherry", "Damson" };
const Array<std::int64_t> FRUIT_VALUES { 10, 20, 30, 40 };

struct Fruits
{
    SharedPtr<ListViewModel<String>> labels = makeSharedPtr<ListViewModel<String>>(FRUIT_LABELS);
    SharedPtr<CountingModel<std::int64_t>> value = makeSharedPtr<CountingModel<std::int64_t>>(20);
    SharedPtr<ListViewModel<std::int64_t>> values = makeSharedPtr<ListViewModel<std::int64_t>>(FRUIT_VALUES);

    ComboBox* make(QWidget* parent = nullptr) const { return new ComboBox(labels, value, values, 10, parent); }
};

QMenu* rightClick(QWidget& widget)
{
    const QPoint position = widget.rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
    QApplication::sendEvent(&widget, &event);
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

void clickMenuEntry(QMenu& menu, const char* objectName)
{
    QAction* action = menu.findChild<QAction*>(QString::fromLatin1(objectName));
    QVERIFY(action);
    QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(action).center());
}

/// A wheel turn as the window system delivers it: sent to the widget under the cursor and, being spontaneous, handed
/// on to its parents while nobody accepts it.
void turnWheel(QWidget& widget, int delta)
{
    const QPointF position = QRectF(widget.rect()).center();
    QWheelEvent event(position, widget.mapToGlobal(position), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    // sendEvent() would mark the event as the application's own, which is never handed on.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(&widget, &event);
}

} // namespace

class tst_SimpleEditors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void checkBoxClickWritesAndTwoBoxesAgree();
    void checkBoxMenu_data();
    void checkBoxMenu();

    void comboBoxChoosingAnEntryWritesItsValue();
    void comboBoxShowsModelValue_data();
    void comboBoxShowsModelValue();
    void comboBoxWheel_data();
    void comboBoxWheel();
    void comboBoxPopupDirection_data();
    void comboBoxPopupDirection();
    void comboBoxFocusFollowsTheList();
    void comboBoxToolTip();
    void comboBoxDropDownWidth();
    void comboBoxVirtualEnum();
    void comboBoxPaste_data();
    void comboBoxPaste();

    void lineEditReadOnlyPalette();
    void lineEditWrites_data();
    void lineEditWrites();

    void pathTypedAndBrowsed();
    void pathBrowseCancelledChangesNothing();
    void pathRefusesAnUnknownMode();

    void addressPartsAndClicks();
};

void tst_SimpleEditors::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

void tst_SimpleEditors::checkBoxClickWritesAndTwoBoxesAgree()
{
    auto model = makeSharedPtr<CountingModel<bool>>(false);
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* first = new CheckBox(model, false, QStringLiteral("Visible"), &window);
    auto* second = new CheckBox(model, false, QStringLiteral("Visible"), &window);
    layout->addWidget(first);
    layout->addWidget(second);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(first->text(), QStringLiteral("Visible"));

    QTest::mouseClick(first, Qt::LeftButton, {}, first->rect().center());
    QCOMPARE(model->value, true);
    QCOMPARE(model->sets, 1);
    QVERIFY(second->isChecked());

    model->set(false);
    QVERIFY(!first->isChecked());
    QVERIFY(!second->isChecked());
    // Showing the model's value is no user edit: no write back.
    QCOMPARE(model->sets, 2);
}

void tst_SimpleEditors::checkBoxMenu_data()
{
    QTest::addColumn<bool>("value");
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QString>("expectedClipboard");

    QTest::newRow("reset") << false << "" << "CommonContextMenu.Reset" << true << "";
    QTest::newRow("copy") << true << "" << "CommonContextMenu.Copy" << true << "true";
    QTest::newRow("paste no") << true << "No" << "CommonContextMenu.Paste" << false << "No";
    QTest::newRow("paste 1") << false << "1" << "CommonContextMenu.Paste" << true << "1";
    QTest::newRow("paste maybe changes nothing") << true << "maybe" << "CommonContextMenu.Paste" << true << "maybe";
}

void tst_SimpleEditors::checkBoxMenu()
{
    QFETCH(bool, value);
    QFETCH(QString, clipboard);
    QFETCH(QString, entry);

    auto model = makeSharedPtr<VariableModel<bool>>(value);
    CheckBox box(model, true, QStringLiteral("Cast shadows"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QGuiApplication::clipboard()->setText(clipboard);

    QMenu* menu = rightClick(box);
    QVERIFY(menu);
    clickMenuEntry(*menu, entry.toLatin1().constData());

    QTEST(model->get(), "expected");
    QCOMPARE(box.isChecked(), model->get());
    QTEST(QGuiApplication::clipboard()->text(), "expectedClipboard");
}

void tst_SimpleEditors::comboBoxChoosingAnEntryWritesItsValue()
{
    Fruits fruits;
    QScopedPointer<ComboBox> box(fruits.make());
    box->show();
    QVERIFY(QTest::qWaitForWindowExposed(box.data()));
    QCOMPARE(box->currentText(), QStringLiteral("Banana"));

    QTest::mouseClick(box.data(), Qt::LeftButton, {}, box->rect().center());
    QAbstractItemView* list = box->view();
    QTRY_VERIFY(list->isVisible());
    // The list ignores a release that follows its opening too closely, so the entry is chosen with the keys.
    QCOMPARE(list->currentIndex().row(), 1);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    QVERIFY(!list->isVisible());

    QCOMPARE(fruits.value->value, 30);
    QCOMPARE(fruits.value->sets, 1);
    QCOMPARE(box->currentText(), QStringLiteral("Cherry"));
}

void tst_SimpleEditors::comboBoxShowsModelValue_data()
{
    QTest::addColumn<std::int64_t>("value");
    QTest::addColumn<QString>("expectedText");

    QTest::newRow("value of the last entry") << std::int64_t(40) << "Damson";
    QTest::newRow("no entry has the value") << std::int64_t(2) << "";
}

void tst_SimpleEditors::comboBoxShowsModelValue()
{
    QFETCH(std::int64_t, value);
    Fruits fruits;
    QScopedPointer<ComboBox> box(fruits.make());

    fruits.value->set(value);
    QTEST(box->currentText(), "expectedText");

    // New labels keep the choice by value.
    const Array<String> renamed { "A", "B", "C", "D" };
    fruits.labels->set(renamed);
    QCOMPARE(box->count(), 4);
    QCOMPARE(box->currentIndex(), box->entryOfValue(value));
    QCOMPARE(fruits.value->sets, 1);
}

void tst_SimpleEditors::comboBoxWheel_data()
{
    QTest::addColumn<bool>("focused");
    QTest::newRow("without focus the view scrolls") << false;
    QTest::newRow("with focus the choice changes") << true;
}

void tst_SimpleEditors::comboBoxWheel()
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
    QCOMPARE(box->hasFocus(), focused);
    const int scrollBefore = area.verticalScrollBar()->value();

    turnWheel(*box, -120);

    if (focused) {
        QCOMPARE(fruits.value->value, 30);
        QCOMPARE(area.verticalScrollBar()->value(), scrollBefore);
    } else {
        QCOMPARE(fruits.value->value, 20);
        QCOMPARE(fruits.value->sets, 0);
        QVERIFY(area.verticalScrollBar()->value() > scrollBefore);
        QVERIFY(!box->hasFocus());
    }
}

void tst_SimpleEditors::comboBoxPopupDirection_data()
{
    QTest::addColumn<ComboBox::PopupDirection>("direction");
    QTest::newRow("up") << ComboBox::PopupDirection::Up;
    QTest::newRow("over") << ComboBox::PopupDirection::Over;
}

void tst_SimpleEditors::comboBoxPopupDirection()
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

void tst_SimpleEditors::comboBoxFocusFollowsTheList()
{
    Fruits fruits;
    QScopedPointer<ComboBox> box(fruits.make());
    box->show();
    QVERIFY(QTest::qWaitForWindowExposed(box.data()));
    QSignalSpy spy(box.data(), &ComboBox::focusChanged);

    QTest::mouseClick(box.data(), Qt::LeftButton, {}, box->rect().center());
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toBool(), true);

    // Escape closes the list as the user closes it.
    QTest::keyClick(box->view(), Qt::Key_Escape);
    QVERIFY(!box->view()->isVisible());
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(1).at(0).toBool(), false);
    QCOMPARE(fruits.value->sets, 0);
}

void tst_SimpleEditors::comboBoxToolTip()
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

void tst_SimpleEditors::comboBoxDropDownWidth()
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

    // The open list takes that width.
    box->show();
    QVERIFY(QTest::qWaitForWindowExposed(box.data()));
    box->showPopup();
    QVERIFY(box->view()->width() >= widest);
}

void tst_SimpleEditors::comboBoxVirtualEnum()
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

void tst_SimpleEditors::comboBoxPaste_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<std::int64_t>("expected");
    QTest::addColumn<int>("expectedSets");

    QTest::newRow("label") << "Cherry" << std::int64_t(30) << 1;
    QTest::newRow("label in other case") << "damson" << std::int64_t(40) << 1;
    QTest::newRow("value") << "10" << std::int64_t(10) << 1;
    QTest::newRow("unknown label") << "Elder" << std::int64_t(20) << 0;
    QTest::newRow("unknown value") << "25" << std::int64_t(20) << 0;
}

void tst_SimpleEditors::comboBoxPaste()
{
    QFETCH(QString, clipboard);
    Fruits fruits;
    QScopedPointer<ComboBox> box(fruits.make());
    box->show();
    QVERIFY(QTest::qWaitForWindowExposed(box.data()));
    QGuiApplication::clipboard()->setText(clipboard);

    QMenu* menu = rightClick(*box);
    QVERIFY(menu);
    clickMenuEntry(*menu, CommonContextMenuOwner::PASTE_OBJECT_NAME);

    QTEST(fruits.value->value, "expected");
    QTEST(fruits.value->sets, "expectedSets");
    QCOMPARE(box->currentIndex(), box->entryOfValue(fruits.value->value));
}

void tst_SimpleEditors::lineEditReadOnlyPalette()
{
    const QPalette defaults = QApplication::palette();
    // Otherwise the test could not tell the two states apart.
    QVERIFY(defaults.color(QPalette::Base) != defaults.color(QPalette::Window));

    LineEdit edit(nullptr, "name", LineEdit::Option::ReadOnly);
    QVERIFY(edit.isReadOnly());
    for (QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
        QCOMPARE(edit.palette().color(group, QPalette::Base), defaults.color(QPalette::Window));

    edit.setReadOnly(false);
    QVERIFY(!edit.isReadOnly());
    for (QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
        QCOMPARE(edit.palette().color(group, QPalette::Base), defaults.color(QPalette::Base));

    edit.setReadOnly(true);
    QCOMPARE(edit.palette().color(QPalette::Base), defaults.color(QPalette::Window));
}

void tst_SimpleEditors::lineEditWrites_data()
{
    QTest::addColumn<bool>("whileTyping");
    QTest::addColumn<int>("setsAfterTyping");
    QTest::addColumn<int>("setsAfterReturn");

    QTest::newRow("on editing finished") << false << 0 << 1;
    QTest::newRow("while typing") << true << 3 << 3;
}

void tst_SimpleEditors::lineEditWrites()
{
    QFETCH(bool, whileTyping);
    auto model = makeSharedPtr<CountingModel<String>>("Key");
    LineEdit edit(model, "", whileTyping ? Flags(LineEdit::Option::UpdateWhileTyping) : Flags<LineEdit::Option>());
    edit.show();
    QVERIFY(QTest::qWaitForWindowExposed(&edit));
    QCOMPARE(edit.text(), QStringLiteral("Key"));

    edit.setCursorPosition(3);
    QTest::keyClicks(&edit, QStringLiteral("Lit"));
    QTEST(model->sets, "setsAfterTyping");
    QTest::keyClick(&edit, Qt::Key_Return);
    QTEST(model->sets, "setsAfterReturn");
    QCOMPARE(model->value, String("KeyLit"));

    // Confirming again without a change writes nothing.
    const int sets = model->sets;
    QTest::keyClick(&edit, Qt::Key_Return);
    QCOMPARE(model->sets, sets);

    // A change from elsewhere is shown (UTF-8 in the model) and not written back.
    model->set("Caf\xC3\xA9");
    QCOMPARE(edit.text(), QStringLiteral("Caf\u00E9"));
    QCOMPARE(model->sets, sets + 1);
}

void tst_SimpleEditors::pathTypedAndBrowsed()
{
    auto model = makeSharedPtr<CountingModel<Io::Path>>(Io::Path("/scenes/old.scn"));
    UserData userData;
    userData.set(String(UiPathFlags::ATTRIBUTE), UiPathFlags { UiPathFlags::Mode::SaveFile, "Scenes (*.scn)" });
    Array<std::pair<UiPathFlags, Optional<Io::Path>>> calls;
    Path path(
        model,
        [&calls](const UiPathFlags& flags, Optional<Io::Path> current) -> Optional<Io::Path> {
            calls.emplace_back(flags, current);
            return Io::Path("/scenes/picked.scn");
        },
        userData);
    path.show();
    QVERIFY(QTest::qWaitForWindowExposed(&path));
    QCOMPARE(path.lineEdit()->text(), QStringLiteral("/scenes/old.scn"));

    path.lineEdit()->selectAll();
    QTest::keyClicks(path.lineEdit(), QStringLiteral("/scenes/typed.scn"));
    QTest::keyClick(path.lineEdit(), Qt::Key_Return);
    QCOMPARE(model->value, Io::Path("/scenes/typed.scn"));
    QCOMPARE(model->sets, 1);

    QToolButton* browse = path.browseButton();
    QVERIFY(browse->isVisible());
    QTest::mouseClick(browse, Qt::LeftButton, {}, browse->rect().center());
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls[0].first.mode, UiPathFlags::Mode::SaveFile);
    QCOMPARE(calls[0].first.filter, String("Scenes (*.scn)"));
    QVERIFY(calls[0].second.has_value());
    QCOMPARE(*calls[0].second, Io::Path("/scenes/typed.scn"));
    QCOMPARE(model->value, Io::Path("/scenes/picked.scn"));
    QCOMPARE(path.lineEdit()->text(), QStringLiteral("/scenes/picked.scn"));
    QCOMPARE(model->sets, 2);
}

void tst_SimpleEditors::pathBrowseCancelledChangesNothing()
{
    auto model = makeSharedPtr<CountingModel<Io::Path>>();
    Optional<Io::Path> startedAt = Io::Path("not called");
    Path path(
        model,
        [&startedAt](const UiPathFlags&, Optional<Io::Path> current) -> Optional<Io::Path> {
            startedAt = current;
            return {};
        },
        UserData());
    QCOMPARE(path.getPathFlags(), UiPathFlags {});
    path.show();
    QVERIFY(QTest::qWaitForWindowExposed(&path));

    QTest::mouseClick(path.browseButton(), Qt::LeftButton, {}, path.browseButton()->rect().center());
    QVERIFY(!startedAt.has_value());
    QCOMPARE(model->sets, 0);
    QVERIFY(path.lineEdit()->text().isEmpty());

    Path withoutBrowse(model, nullptr, UserData());
    withoutBrowse.show();
    QVERIFY(!withoutBrowse.browseButton()->isVisible());
}

void tst_SimpleEditors::pathRefusesAnUnknownMode()
{
    UserData userData;
    userData.set(String(UiPathFlags::ATTRIBUTE), UiPathFlags { static_cast<UiPathFlags::Mode>(7), "" });
    try {
        Path path(nullptr, nullptr, userData);
        QFAIL("an unknown mode was accepted");
    } catch (const StopException& exception) {
        QCOMPARE(exception.getUnit(), String("widgets/Path"));
    }
}

void tst_SimpleEditors::addressPartsAndClicks()
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
    QVERIFY(!address.partButton(0)->font().bold());

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

QTEST_MAIN(tst_SimpleEditors)
#include "tst_SimpleEditors.moc"
