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
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed NOTIFY collapsibleStateChanged)

public:
    /// Where a title-row element sits: before the title text or at the right end of the row.
    enum class Position
    {
        Left,
        Right,
    };
    Q_ENUM(Position)

    explicit Collapsible(QWidget* parent = nullptr);
    Collapsible(SharedPtr<Model<bool>> collapsed, const QString& title, QWidget* parent = nullptr);
    Collapsible(SharedPtr<Model<bool>> collapsed, QWidget* parent = nullptr);
    ~Collapsible() override;

    void setCollapsibleModel(SharedPtr<Model<bool>> model);
    const SharedPtr<Model<bool>>& collapsibleModel() const { return collapsedModel; }
    /// A check box in the title row bound to `model`; null removes it.
    void setCheckBoxModel(SharedPtr<Model<bool>> model);
    const SharedPtr<Model<bool>>& checkBoxModel() const { return checkModel; }

    bool isCollapsed() const;
    bool isCollapsible() const { return collapsible; }
    void setCollapsible(bool value);

    void setCornerWidget(QWidget* widget);
    QWidget* cornerWidget() const { return corner; }
    /// The corner widget handed back to the caller, unparented.
    QWidget* takeCornerWidget();
    void setCornerWidgetMargin(int margin);
    int cornerWidgetMargin() const { return cornerMargin; }
    /// 0 takes the corner widget's size hint.
    void setCornerWidgetFixedWidth(int width);

    /// Width of the collapsed box's contents; 0 takes the width of the title row.
    void setLabelFixedWidth(int width);
    int labelWidthHint() const;

    void setArrowPosition(Position position);
    Position arrowPosition() const { return arrowPos; }
    void setCheckBoxPosition(Position position);
    Position checkBoxPosition() const { return checkPos; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    void notify() override;

    /// The title row and the places of its elements, in widget coordinates; empty rectangles for absent elements.
    QRect titleRowRectangle() const;
    QRect arrowRectangle() const;
    QRect checkBoxRectangle() const;
    QRect labelRectangle() const;

public Q_SLOTS:
    void setCollapsed(bool collapsed);
    void collapse();
    void expand();

Q_SIGNALS:
    void collapsibleStateChanged(bool collapsed);

protected:
    void childEvent(QChildEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

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
