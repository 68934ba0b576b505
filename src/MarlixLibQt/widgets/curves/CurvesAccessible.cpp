#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/curves/Curves.h>

// The curve area reads as a graphic whose control points are its children, so a screen reader can list them and a
// magnifier can follow them.
namespace Marlix::Widgets {

namespace {

class AccessibleCurves final : public AccessibleCompositeWidget
{
    Q_DECLARE_TR_FUNCTIONS(AccessibleCurves)

public:
    explicit AccessibleCurves(Curves* curves)
        : AccessibleCompositeWidget(curves, QAccessible::Graphic)
    {
    }

    int partCount() const override { return int(curves()->getActiveCurve().getPointCount()); }

    AccessiblePartDescription describePart(int index) const override
    {
        const Curves* owner = curves();
        const Vector2 position = owner->getActiveCurve().getPoint(std::size_t(index)).position;
        AccessiblePartDescription part;
        part.role = QAccessible::Graphic;
        part.name = tr("Point %1: %2, %3").arg(index + 1).arg(position.x, 0, 'f', 2).arg(position.y, 0, 'f', 2);
        // The square the point is drawn in, which is also where a press takes it; the part of it outside the
        // widget (a zoomed curve) is not on the screen.
        const int radius = getDeviceIndependentPixels(Curves::RADIUS, owner);
        const QPoint centre = owner->toWidget(position).toPoint();
        const QRect square
            = QRect(centre - QPoint(radius, radius), QSize(2 * radius + 1, 2 * radius + 1)) & owner->rect();
        part.rect = square.isEmpty() ? QRect() : QRect(owner->mapToGlobal(square.topLeft()), square.size());
        part.state.invisible = square.isEmpty();
        part.state.offscreen = square.isEmpty();
        return part;
    }

private:
    const Curves* curves() const { return static_cast<const Curves*>(widget()); }
};

} // namespace

QAccessibleInterface* makeCurvesAccessible(QWidget* curves)
{
    return new AccessibleCurves(static_cast<Curves*>(curves));
}

} // namespace Marlix::Widgets
