#pragma once

#include <QObject>

// The information card: its sections for one request, the count for several, and blank.
class RequestInfoPanelTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void card_data();
    void card();
    void severalRowsAndBlank();
};
