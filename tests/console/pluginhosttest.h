#pragma once

#include <QObject>

class PluginHostTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void startsInTheOrderOfRequirements();
    void refusesWhatCannotStart_data();
    void refusesWhatCannotStart();
    void reportsAFolderWithoutPlugins_data();
    void reportsAFolderWithoutPlugins();
    void endsThePluginsInReverseOrder();
};
