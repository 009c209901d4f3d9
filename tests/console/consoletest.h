#pragma once

#include <QObject>

class ConsoleTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void logsIn_data();
    void logsIn();
    void fillsTheStoreBeforeTheTabsAreBuilt();
    void saysWhyThereAreNoTabs_data();
    void saysWhyThereAreNoTabs();
    void exitsOnAnUnknownUser();
    void savesAScreenshot_data();
    void savesAScreenshot();
};
