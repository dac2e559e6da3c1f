#include "steps.h"

#include <QGenericPlugin>

/// Loaded by Qt when QT_QPA_GENERIC_PLUGINS names "velmo_tour"; the
/// text behind the colon is the folder for the pictures.
class tour_plugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "tour.json")

public:
    QObject* create(const QString& /*key*/, const QString& folder) override
    {
        return new tour(folder);
    }
};

#include "tour_plugin.moc"
