#pragma once

#include "objectinfo.h"
#include "tableundertest.h"
#include "uidfilterproxy.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStandardItemModel>
#include <QTableView>
#include <QVariant>
#include <QVector>

// The same requests shown the way a Qt developer would pick first: every cell worked out once
// into a QStandardItemModel, a QSortFilterProxyModel that tests a set of uids, and a QTableView.
// It follows the tab's rules in the plain way: a change re-derives the row and then filters all
// rows again with the visible set rebuilt from the store, and a search scans every row.
class BaselineTable : public QObject, public TableUnderTest
{
    Q_OBJECT
public:
    BaselineTable();
    ~BaselineTable() override;

    void load() override;
    void search(const QString& text) override;
    void sort(int column, Qt::SortOrder order) override;
    int shownRows() const override;

private:
    void storeChanged(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    // The shown value of every column of a request's row.
    QVector<QVariant> rowValues(const vorandel::ObjectInfo& request) const;
    void appendRow(const vorandel::ObjectInfo& request);
    // Whether a name word, the personnel number, the request's number or a date of the row starts
    // with `prefix`.
    bool rowStartsWith(int row, const QString& prefix) const;
    // All requests of the store: the operator holds the right to see all.
    static QSet<vorandel::TYPE_ID> visibleUids();

    QStandardItemModel m_model;
    UidFilterProxy m_proxy;
    QTableView m_view;
    QHash<vorandel::TYPE_ID, int> m_rows;  // the model's row of each request
};
