#include <QObject>
#include <QtPlugin>

// A valid Qt plug-in that isn't one of the console's: the host must skip it.
class ForeignPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "vd.test.ForeignPlugin")
};

#include "foreignplugin.moc"
