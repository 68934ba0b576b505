#include "StudioPage.h"

namespace Studio {

std::vector<Page> allPages()
{
    return {
        { QStringLiteral("Controls"), QStringLiteral("controls"), createControlsPage },
        { QStringLiteral("Models"), QStringLiteral("models"), createModelsPage },
        { QStringLiteral("Editors"), QStringLiteral("editors"), createEditorsPage },
        { QStringLiteral("Colour"), QStringLiteral("colour"), createColourPage },
        { QStringLiteral("Properties"), QStringLiteral("properties"), createPropertiesPage },
        { QStringLiteral("Mesh properties"), QStringLiteral("mesh-properties"), createMeshPropertiesPage },
        { QStringLiteral("Graph"), QStringLiteral("graph"), createGraphPage,
            { { QStringLiteral("graph-overview"), showGraphOverview } } },
        { QStringLiteral("Curves"), QStringLiteral("curves"), createCurvesPage },
        { QStringLiteral("Lister"), QStringLiteral("lister"), createListerPage },
    };
}

} // namespace Studio
