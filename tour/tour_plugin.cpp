#include "load.h"
#include "steps.h"

#include <QGenericPlugin>

/// Loaded by Qt when QT_QPA_GENERIC_PLUGINS names "velmo_tour" or "velmo_load"; the
/// text behind the colon is the folder for pictures and files.
class tour_plugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "tour.json")

public:
    QObject* create(const QString& key, const QString& folder) override
    {
        return new tour(folder, key == QLatin1String("velmo_load") ? run_load : walk);
    }
};

#include "tour_plugin.moc"
