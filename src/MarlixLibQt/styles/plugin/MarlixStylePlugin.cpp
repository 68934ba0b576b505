#include <MarlixLibQt/styles/MarlixOriginalStyle.h>
#include <MarlixLibQt/styles/MarlixStyle.h>

#include <QStyleFactory>
#include <QStylePlugin>

namespace Marlix {

/// Lets any Qt application run with the library's look: "-style marlix" gives the look of the library's own
/// applications, "-style marlix-plain" only the library's hints and metrics over "fusion".
class MarlixStylePlugin : public QStylePlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QStyleFactoryInterface_iid FILE "marlixstyleplugin.json")

public:
    QStyle* create(const QString& key) override
    {
        const QString name = key.toLower();
        if (name == QLatin1String("marlix"))
            return new MarlixOriginalStyle;
        if (name == QLatin1String("marlix-plain"))
            return new MarlixStyle(QStyleFactory::create(QStringLiteral("fusion")));
        return nullptr;
    }
};

} // namespace Marlix

#include "MarlixStylePlugin.moc"
