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
    Container();
    explicit Container(QWidget* parent, Qt::WindowFlags flags = {});
    ~Container() override;

protected:
    Container(QFramePrivate& dd, QWidget* parent, Qt::WindowFlags flags);

    bool event(QEvent* event) override;

private:
    // Only compared with null: remembers that the one polish on a layout request has happened.
    const QLayout* polishedLayout = nullptr;
};

} // namespace Marlix::Widgets
