#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QGroupBox>
#include <QPointer>

namespace Marlix::Widgets {

/// A titled group box whose contents fold away with a click on its title row; the state lives in a model.
class MARLIXLIBQT_EXPORT Collapsible : public QGroupBox, public BaseWithModel
{
    Q_OBJECT
    /// Whether the contents are folded away; always false for a box without a title.
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed NOTIFY collapsibleStateChanged)

public:
    /// Where a title-row element sits: before the title text or at the right end of the row.
    enum class Position
    {
        Left, ///< Before the title text, in the order the elements were placed.
        Right, ///< At the right end of the title row, left of the corner widget.
    };
    Q_ENUM(Position)

    /// An expanded box without a title, with a state model of its own.
    explicit Collapsible(QWidget* parent = nullptr);
    /// A box titled \p title whose collapsed state is \p collapsed (a model of its own when null), shared with others.
    Collapsible(SharedPtr<Model<bool>> collapsed, const QString& title, QWidget* parent = nullptr);
    Collapsible(SharedPtr<Model<bool>> collapsed, QWidget* parent = nullptr); ///< \overload
    ~Collapsible() override; ///< Destroys the box and its corner widget; the models live on with their other owners.

    /// Binds the collapsed state to \p model and applies its value; an Exception for null, which changes nothing.
    void setCollapsibleModel(SharedPtr<Model<bool>> model);
    /// The model of the collapsed state; never null.
    const SharedPtr<Model<bool>>& collapsibleModel() const { return collapsedModel; }
    /// A check box in the title row bound to `model`; null removes it.
    void setCheckBoxModel(SharedPtr<Model<bool>> model);
    /// The model of the title-row check box; null when there is none.
    const SharedPtr<Model<bool>>& checkBoxModel() const { return checkModel; }

    bool isCollapsed() const; ///< True when the model says collapsed and the box has a title to click.
    /// False when the title row shows no arrow and clicks on it do not fold the box.
    bool isCollapsible() const { return collapsible; }
    /// Shows or hides the arrow and enables or disables folding by clicks; the current state stays as it is.
    void setCollapsible(bool value);

    /// A widget at the right end of the title row, reparented and owned by the box; the previous one is deleted.
    void setCornerWidget(QWidget* widget);
    QWidget* cornerWidget() const { return corner; } ///< The corner widget; null when there is none.
    /// The corner widget handed back to the caller, unparented.
    QWidget* takeCornerWidget();
    void setCornerWidgetMargin(int margin); ///< The gap in pixels between the corner widget and the box's right edge.
    /// The gap in pixels between the corner widget and the box's right edge.
    int cornerWidgetMargin() const { return cornerMargin; }
    /// 0 takes the corner widget's size hint.
    void setCornerWidgetFixedWidth(int width);

    /// Width of the collapsed box's contents; 0 takes the width of the title row.
    void setLabelFixedWidth(int width);
    /// The width in pixels the title text needs; property sheets align their label columns with it.
    int labelWidthHint() const;

    void setArrowPosition(Position position); ///< Where the fold arrow sits in the title row.
    /// Where the fold arrow sits in the title row; Position::Left by default.
    Position arrowPosition() const { return arrowPos; }
    void setCheckBoxPosition(Position position); ///< Where the check box sits in the title row.
    /// Where the check box sits in the title row; Position::Left by default.
    Position checkBoxPosition() const { return checkPos; }

    QSize sizeHint() const override; ///< The title row alone while collapsed; the group box's hint otherwise.
    /// Room for the title row's elements while collapsed; the group box's minimum otherwise.
    QSize minimumSizeHint() const override;
    /// Applies the model's state: shows or hides the contents and emits collapsibleStateChanged() on a change.
    void notify() override;

    /// The title row and the places of its elements, in widget coordinates; empty rectangles for absent elements.
    QRect titleRowRectangle() const;
    /// Where the fold arrow is drawn; empty when the box is not collapsible or has no title.
    QRect arrowRectangle() const;
    QRect checkBoxRectangle() const; ///< Where the check box is drawn; empty without a check box model.
    QRect labelRectangle() const; ///< Where the title text is drawn, elided to fit.

public Q_SLOTS:
    /// Writes \p collapsed to the model; a box without a title always stays expanded.
    void setCollapsed(bool collapsed);
    void collapse(); ///< Folds the contents away.
    void expand(); ///< Shows the contents.

Q_SIGNALS:
    /// Emitted once the contents were hidden or shown, whoever changed the model.
    void collapsibleStateChanged(bool collapsed);

protected:
    /// Applies the collapsed state to contents added later, once the layout holds them.
    void childEvent(QChildEvent* event) override;
    /// Starts a click on the check box or the title row; other presses pass on to the parent.
    void mousePressEvent(QMouseEvent* event) override;
    /// Completes a click over the element it started on: toggles the check box model or folds the box.
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override; ///< Keeps a started click; other moves pass on.
    /// Left folds, Right unfolds, Enter toggles; Space checks the title's check box when there is one, else toggles.
    void keyPressEvent(QKeyEvent* event) override;
    /// Draws the frame through the style, and the title row's arrow, check box and elided title.
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override; ///< Keeps the corner widget at the right end of the title row.
    void showEvent(QShowEvent* event) override; ///< Applies the collapsed state to the contents before they show.

private:
    void updateFocusPolicy();
    struct Layout
    {
        QRect row;
        QRect arrow;
        QRect checkBox;
        QRect label;
    };
    Layout computeTitleLayout() const;
    QRect cornerWidgetRectangle() const;
    void updateGeometryAndVisibility(bool collapsed);
    void scheduleForcedUpdate();
    int indicatorSize() const;

    SharedPtr<Model<bool>> collapsedModel;
    SharedPtr<Model<bool>> checkModel;
    CallbackLifetime collapsedSubscription;
    CallbackLifetime checkSubscription;
    bool collapsible = true;
    bool appliedCollapsed = false;
    bool forceUpdate = true;
    bool forcedUpdateQueued = false;
    QPointer<QWidget> corner;
    int cornerMargin = 0;
    int cornerFixedWidth = 0;
    int labelFixedWidth = 0;
    Position arrowPos = Position::Left;
    Position checkPos = Position::Left;
    // The element under the press; a release over the same element completes the click.
    enum class Pressed
    {
        None,
        Toggle,
        CheckBox,
    } pressed
        = Pressed::None;
};

} // namespace Marlix::Widgets
