#pragma once

#include <MarlixLibQt/widgets/Model.h>

namespace Marlix::Widgets::Testing {

/// A model that counts what an editor does to it: change brackets and sets.
template <class T> class RecordingModel : public VariableModel<T>
{
public:
    using VariableModel<T>::VariableModel;

    T get() const override
    {
        ++gets;
        return VariableModel<T>::get();
    }
    void set(T value) override
    {
        ++sets;
        if (begins == commits + reverts)
            ++setsOutsideBracket;
        VariableModel<T>::set(std::move(value));
    }
    void beginChange() override
    {
        // A second begin without an end would be a nested bracket, which the undo manager cannot express.
        if (begins != commits + reverts)
            ++nestedBegins;
        ++begins;
    }
    void commitChange() override { ++commits; }
    void revertChange() override { ++reverts; }

    bool isBracketOpen() const { return begins != commits + reverts; }
    void resetCounts() { gets = sets = begins = commits = reverts = setsOutsideBracket = nestedBegins = 0; }

    mutable int gets = 0;
    int sets = 0;
    int begins = 0;
    int commits = 0;
    int reverts = 0;
    int setsOutsideBracket = 0;
    int nestedBegins = 0;
};

} // namespace Marlix::Widgets::Testing
