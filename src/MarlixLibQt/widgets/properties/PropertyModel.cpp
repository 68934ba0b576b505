#include <MarlixLibQt/widgets/properties/PropertyModel.h>

// The export attribute comes from the declarations in the header.
template class Marlix::Widgets::Model<Marlix::Widgets::EntityHandleSet>;
template class Marlix::Widgets::AbstractModel<Marlix::Widgets::EntityHandleSet>;

#define MARLIX_INSTANTIATE_PROPERTY_MODEL_TYPES(...) template class Marlix::Widgets::PropertyModel<__VA_ARGS__>;

MARLIX_FOR_EACH_PROPERTY_MODEL_TYPE(MARLIX_INSTANTIATE_PROPERTY_MODEL_TYPES)
