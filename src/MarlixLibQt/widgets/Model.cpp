#include <MarlixLibQt/widgets/Model.h>

// The export attribute comes from the declarations in the header; repeating it here would be ignored.
#define MARLIX_INSTANTIATE_MODEL_TYPES(...)                                                                            \
    template class Marlix::Widgets::Model<__VA_ARGS__>;                                                                \
    template class Marlix::Widgets::AbstractModel<__VA_ARGS__>;                                                        \
    template class Marlix::Widgets::VariableModel<__VA_ARGS__>;                                                        \
    template class Marlix::Widgets::LambdaModel<__VA_ARGS__>;

MARLIX_FOR_EACH_MODEL_TYPE(MARLIX_INSTANTIATE_MODEL_TYPES)
