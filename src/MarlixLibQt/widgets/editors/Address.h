#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QList>
#include <QString>

class QAbstractButton;
class QHBoxLayout;

namespace Marlix::Widgets {

/// An address bar: the parts of a path ("Scene", "Lights", "Key") as a row of flat buttons with separators between
/// them. Clicking a part emits its index, so the host can go up to that level; the last part is the current one.
class MARLIXLIBQT_EXPORT Address : public Container, public BaseWithModel
{
    Q_OBJECT

public:
    /// The text between two parts.
    static constexpr char16_t SEPARATOR = u'\u203A';

    /// A null model makes the bar keep its own parts.
    explicit Address(SharedPtr<Model<QList<QString>>> model, QWidget* parent = nullptr);
    ~Address() override;

    /// The parts shown; the bar's own model when it was made without one.
    const SharedPtr<Model<QList<QString>>>& getModel() const { return model; }

    int partCount() const { return static_cast<int>(buttons.size()); } ///< The number of parts shown.
    /// The button of part `index`, or null.
    QAbstractButton* partButton(int index) const;

    void notify() override;

Q_SIGNALS:
    void clicked(int index); ///< Emitted when the user clicks part \p index (0 is the first, outermost one).

private:
    void rebuild(const QList<QString>& parts);

    SharedPtr<Model<QList<QString>>> model;
    QHBoxLayout* row = nullptr;
    QList<QAbstractButton*> buttons;
    QList<QWidget*> separators;
    QList<QString> shownParts;
};

} // namespace Marlix::Widgets
