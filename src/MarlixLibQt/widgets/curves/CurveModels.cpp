#include <MarlixLibQt/widgets/curves/CurveModels.h>

#define MARLIX_INSTANTIATE_CURVE_MODEL_TYPES(...)                                                                      \
    template class Marlix::Widgets::Model<__VA_ARGS__>;                                                                \
    template class Marlix::Widgets::AbstractModel<__VA_ARGS__>;                                                        \
    template class Marlix::Widgets::VariableModel<__VA_ARGS__>;                                                        \
    template class Marlix::Widgets::LambdaModel<__VA_ARGS__>;

MARLIX_FOR_EACH_CURVE_MODEL_TYPE(MARLIX_INSTANTIATE_CURVE_MODEL_TYPES)
