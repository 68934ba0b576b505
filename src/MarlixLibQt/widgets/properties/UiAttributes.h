#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GenericDataObject.h>
#include <MarlixLib/data/PropertyDefinition.h>
#include <MarlixLib/data/UserData.h>
#include <MarlixLib/data/Value.h>

#include <cstdint>

// The attribute records a property's definition may carry, besides the conditions (UiConditions.h) and the path
// flags. Free of Qt on purpose, like the conditions: scene definitions carry them without building against widgets.

namespace Marlix::Widgets {

/// Names the bool property of the same object that switches this one on: the row accepts edits only while it is true
/// on every selected object. Stored as a String.
inline constexpr const char* ENABLER_PROPERTY_ATTRIBUTE = "Zorva.Ui.EnablerProperty";
/// Narrows the entities a reference may point to, stored as an EntityClassInfo.
inline constexpr const char* ENTITY_CLASS_ATTRIBUTE = "Zorva.Ui.EntityClass";
/// A short column header for the lister, stored as a String.
inline constexpr const char* ABBREVIATION_ATTRIBUTE = "Zorva.Ui.Abbreviation";

/// Switches a property definition may carry in a UiFlags record.
enum class UiFlag : std::uint32_t
{
    /// Shown, never edited, whatever the definition says.
    ReadOnly = 1u << 0,
    /// No row in the property sheet.
    Hidden = 1u << 1,
    /// No reset button and no reset entry: the default means nothing to the user.
    NoReset = 1u << 2,
    /// The slider options' range also bounds typed, dragged and pasted values: a physical range, not a usual one.
    Clamped = 1u << 3,
};

/// How the sheet and the editors treat one property.
struct UiFlags
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.Flags"; ///< User-data key of the record.
    Flags<UiFlag> flags; ///< Set switches; none means the usual treatment.

    /// The switches stored in a definition's user data (`options`); none when it carries no UiFlags.
    static Flags<UiFlag> of(const UserData& options)
    {
        const auto* stored = options.get<UiFlags>(ATTRIBUTE);
        return stored ? stored->flags : Flags<UiFlag> {};
    }
};

/// An entry of the row's context menu that writes a fixed value in one undo step ("Use Scene Scale", "Set to 1:1").
struct UiValueSetter
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ValueSetter"; ///< User-data key of the record.
    String label; ///< Text of the action, already translated.
    /// Of the property's type; a value of another type is refused when the action runs.
    Value value;
};

/// What an entity picker offers beyond the accepted class.
struct UiEntityPicker
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.EntityPicker"; ///< User-data key of the record.
    /// Entities it refuses are not offered; an empty filter offers every entity of the class.
    Function<bool(const EntityHolder<Entity>&)> filter;
    /// Whether "None" is offered.
    bool allowNone = true;
};

/// The row label computed from the object, for rows whose meaning depends on other properties ("Radius" or
/// "Diameter"). Re-read whenever the object changes; an empty name keeps the definition's name.
struct UiDynamicName
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.DynamicName"; ///< User-data key of the record.
    /// Computes the label from the object shown; called on the UI thread.
    Function<String(const GenericDataObject&)> name;
};

/// Switches for the presentation of a list property, carried in a UiListFlags record.
enum class UiListFlag : std::uint32_t
{
    /// The list has a fixed length: no add and no remove.
    FixedSize = 1u << 0,
    /// The order means nothing: no reordering.
    NoReorder = 1u << 1,
};

/// How a list property is presented. Note the key's spelling, which stored scenes use.
struct UiListFlags
{
    /// User-data key of the record, "Zorva.UI.ListFlags".
    static constexpr StringView ATTRIBUTE = "Zorva.UI.ListFlags";
    Flags<UiListFlag> flags; ///< Set switches; none allows add, remove and reordering.
};

/// Makes the item the add button appends, for lists whose new items are chosen (an entity, a file).
struct UiListItemAdder
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ListItemAdder"; ///< User-data key of the record.
    /// Tooltip of the add button; empty keeps the usual one.
    String label;
    /// A value of the element type, or nothing when the user cancelled.
    Function<Optional<Value>()> make;
};

/// Whole lists the user can put in place of the current one.
struct UiListPresets
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ListPresets"; ///< User-data key of the record.
    /// One whole list offered by name.
    struct Preset
    {
        String name; ///< Menu text, already translated.
        /// Of the list's own type.
        Value list;
    };
    Array<Preset> presets; ///< In menu order.
};

/// The item the add button appends when there is no item adder; the element type's default without it.
struct UiListDefaultValue
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ListDefaultValue"; ///< User-data key of the record.
    Value value; ///< Of the element type; a value of another type is refused when the button is pressed.
};

/// Switches of a material map slot, carried in a UiMaterialMapSlotFlags record.
enum class UiMaterialMapSlotFlag : std::uint32_t
{
    /// The slot takes no map, only its constant value.
    NoMap = 1u << 0,
    /// The slot's map is a greyscale one.
    Scalar = 1u << 1,
};

/// How a material map slot is presented.
struct UiMaterialMapSlotFlags
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.MaterialMapSlotFlags"; ///< User-data key of the record.
    Flags<UiMaterialMapSlotFlag> flags; ///< Set switches; none means a colour map that may be set.
};

/// Switches of a colour editor, carried in a UiColorFlags record.
enum class UiColorFlag : std::uint32_t
{
    /// The colour's alpha is not shown and not edited.
    NoAlpha = 1u << 0,
    /// Components may exceed 1 up to the colour range's maximum.
    Hdr = 1u << 1,
};

/// Colour editor flags, for plain colours ("Zorva.Ui.ColorFlags") and for colour-or-map slots
/// ("Zorva.Ui.ColorOrMapFlags", whose colour editor honours them too).
struct UiColorFlags
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ColorFlags"; ///< User-data key for plain colours.
    /// User-data key for colour-or-map slots.
    static constexpr StringView COLOR_OR_MAP_ATTRIBUTE = "Zorva.Ui.ColorOrMapFlags";
    Flags<UiColorFlag> flags; ///< Set switches; none shows alpha and limits components to 1.

    /// The switches of both keys in a definition's user data (`options`), combined; none when it carries neither.
    static Flags<UiColorFlag> of(const UserData& options)
    {
        Flags<UiColorFlag> found;
        for (StringView key : { ATTRIBUTE, COLOR_OR_MAP_ATTRIBUTE })
            if (const auto* stored = options.get<UiColorFlags>(key))
                found = found | stored->flags;
        return found;
    }
};

/// The range of the colour components written by the editor; values outside are clamped where they are written.
struct UiColorRange
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ColorRange"; ///< User-data key of the record.
    float minimum = 0.0f; ///< Lowest component written.
    float maximum = 1.0f; ///< Highest component written; a maximum below the minimum is taken as the minimum.
};

/// The editor shows and edits the colour through this pair, for colours stored in another space than they are seen
/// (a tint stored premultiplied, a temperature-corrected white). Both must be set, or neither is used.
struct UiColorTransform
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ColorTransform"; ///< User-data key of the record.
    Function<Rgb(const Rgb&)> toShown; ///< From the stored colour to the one the editor shows.
    /// From the colour the user picked to the one stored; its result is then limited to the colour range.
    Function<Rgb(const Rgb&)> fromShown;
};

/// How the lister shows a ratio in a column.
struct UiRatioDisplayMode
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.RatioDisplayMode"; ///< User-data key of the record.
    /// The notations of a ratio.
    enum class Mode : std::uint32_t
    {
        Fraction = 0, ///< "0.25".
        Percent = 1, ///< "25%".
        /// "1:4" for 0.25.
        Ratio = 2,
    };
    Mode mode = Mode::Fraction; ///< Fraction unless set.
};

/// Where the lister puts a property.
struct UiListerViewOptions
{
    static constexpr StringView ATTRIBUTE = "Zorva.Ui.ListerViewOptions"; ///< User-data key of the record.
    /// A column the user adds by hand, not one shown from the start.
    bool hiddenByDefault = false;
    /// Width in device-independent pixels; 0 lets the lister decide.
    int width = 0;
};

/// The flags of a material map slot; none when the property carries none.
inline Flags<UiMaterialMapSlotFlag> getPropertyUiMaterialMapSlotFlags(const PropertyDefinition& definition)
{
    const auto* flags = definition.getUserData().get<UiMaterialMapSlotFlags>(UiMaterialMapSlotFlags::ATTRIBUTE);
    return flags ? flags->flags : Flags<UiMaterialMapSlotFlag> {};
}

/// The lister's column header text of `definition`; empty when it has no abbreviation.
inline String getPropertyUiAbbreviation(const PropertyDefinition& definition)
{
    const auto* abbreviation = definition.getUserData().get<String>(ABBREVIATION_ATTRIBUTE);
    return abbreviation ? *abbreviation : String();
}

/// The lister's notation for a ratio property; Fraction when the definition carries no mode.
inline UiRatioDisplayMode::Mode getPropertyUiRatioDisplayMode(const PropertyDefinition& definition)
{
    const auto* mode = definition.getUserData().get<UiRatioDisplayMode>(UiRatioDisplayMode::ATTRIBUTE);
    return mode ? mode->mode : UiRatioDisplayMode::Mode::Fraction;
}

/// Where the lister puts the property's column; shown from the start with the lister's width when nothing is set.
inline UiListerViewOptions getPropertyUiListerViewOptions(const PropertyDefinition& definition)
{
    const auto* options = definition.getUserData().get<UiListerViewOptions>(UiListerViewOptions::ATTRIBUTE);
    return options ? *options : UiListerViewOptions {};
}

} // namespace Marlix::Widgets
