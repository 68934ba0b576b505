#include "StudioPage.h"

#include <QCoreApplication>

namespace Studio {

std::vector<Page> allPages()
{
    return {
        { QCoreApplication::translate("Studio::Page", "Controls"), QStringLiteral("controls"), createControlsPage },
        { QCoreApplication::translate("Studio::Page", "Models"), QStringLiteral("models"), createModelsPage },
        { QCoreApplication::translate("Studio::Page", "Editors"), QStringLiteral("editors"), createEditorsPage },
        { QCoreApplication::translate("Studio::Page", "Colour"), QStringLiteral("colour"), createColourPage },
        { QCoreApplication::translate("Studio::Page", "Properties"), QStringLiteral("properties"),
            createPropertiesPage },
        { QCoreApplication::translate("Studio::Page", "Mesh properties"), QStringLiteral("mesh-properties"),
            createMeshPropertiesPage },
        { QCoreApplication::translate("Studio::Page", "Graph"), QStringLiteral("graph"), createGraphPage,
            { { QStringLiteral("graph-overview"), showGraphOverview } } },
        { QCoreApplication::translate("Studio::Page", "Curves"), QStringLiteral("curves"), createCurvesPage },
        { QCoreApplication::translate("Studio::Page", "Lister"), QStringLiteral("lister"), createListerPage },
    };
}

} // namespace Studio
