#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/editors/Vector.h>

namespace Marlix::Widgets {

/// A duration kept in milliseconds, edited as hours, minutes and seconds. Fractions of a second are not shown; a
/// total written from the fields is held within the editor's bounds.
class MARLIXLIBQT_EXPORT TimeEdit : public Vector
{
    Q_OBJECT

public:
    /// `minimum` and `maximum` bound the duration in milliseconds.
    TimeEdit(SharedPtr<Model<double>> model, double minimum, double maximum, QWidget* parent = nullptr);
    ~TimeEdit() override;

    /// Hours × 3600000 + minutes × 60000 + seconds × 1000; minutes and seconds above 59 still count.
    static double toTime(const Array<double>& hoursMinutesSeconds);
    /// Whole hours, minutes (0..59) and seconds (0..59) of a duration; the milliseconds are dropped.
    static Array<double> toTimeArray(double milliseconds);

    /// New bounds in milliseconds; the fields are re-shown. A NaN bound or a minimum above the maximum throws
    /// StopException and changes nothing.
    void setRange(double minimum, double maximum);
    double getMinimum() const; ///< The lower bound in milliseconds.
    double getMaximum() const; ///< The upper bound in milliseconds.
    /// The duration model in milliseconds, as given to the constructor.
    const SharedPtr<Model<double>>& getTimeModel() const { return timeModel; }

private:
    struct Bounds
    {
        double minimum;
        double maximum;
    };

    TimeEdit(const SharedPtr<Model<double>>& model, const SharedPtr<Bounds>& bounds, QWidget* parent);
    TimeEdit(SharedPtr<Model<double>> model, SharedPtr<Bounds> bounds, SharedPtr<LambdaModel<Array<double>>> adapter,
             QWidget* parent);
    static SharedPtr<LambdaModel<Array<double>>> makeAdapter(const SharedPtr<Model<double>>& model,
                                                             const SharedPtr<Bounds>& bounds);
    void applyHourRange();

    SharedPtr<Model<double>> timeModel;
    // Shared with the adapter's setter, which may outlive this widget until Qt deletes the fields.
    SharedPtr<Bounds> bounds;
    SharedPtr<LambdaModel<Array<double>>> adapter;
};

} // namespace Marlix::Widgets
