#pragma once

#include "tableundertest.h"

#include <QPointer>

#include <memory>

class QTableView;
class RequestView;

// The tab "Заявки" itself, created and started the way the console does it.
class OurTable : public TableUnderTest
{
public:
    OurTable();
    ~OurTable() override;

    void load() override;
    void search(const QString& text) override;
    void sort(int column, Qt::SortOrder order) override;
    int shownRows() const override;

private:
    const std::unique_ptr<RequestView> m_view;
    QPointer<QTableView> m_table;  // the tab's table, once it is built
};
