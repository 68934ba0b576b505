#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QFrame>

class QFramePrivate;
class QLayout;

namespace Marlix::Widgets {

/// Frame base of composite editors: it polishes itself once, when its layout first asks for a layout pass, so that
/// the style's per-widget settings are in place before the children are first measured.
class MARLIXLIBQT_EXPORT Container : public QFrame
{
    Q_OBJECT

public:
    /// A frame without a parent.
    Container();
    /// A frame inside \p parent with the window \p flags.
    explicit Container(QWidget* parent, Qt::WindowFlags flags = {});
    ~Container() override;

protected:
    /// For subclasses of Qt widgets that bring their own private data.
    Container(QFramePrivate& dd, QWidget* parent, Qt::WindowFlags flags);

    /// Polishes the frame on its first layout request, then hands the event to QFrame.
    bool event(QEvent* event) override;

private:
    // Only compared with null: remembers that the one polish on a layout request has happened.
    const QLayout* polishedLayout = nullptr;
};

} // namespace Marlix::Widgets
