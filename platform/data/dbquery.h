#pragma once

#include "vdplatform_export.h"

#include <QDataStream>
#include <QHash>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

// A value bound to a named placeholder of a prepared statement.
struct VDPLATFORM_EXPORT DbPreparedQueryValue
{
    QVariant value;
    bool output = false;

    bool operator==(const DbPreparedQueryValue& o) const { return value == o.value && output == o.output; }
};

// A query for the asynchronous database command: statements run in order in one transaction.
struct VDPLATFORM_EXPORT DbQuery
{
    QStringList queries;
    QHash<QString, DbPreparedQueryValue> values;
    bool transaction = true;
    int timeoutMs = 0;  // 0: the server's default

    bool operator==(const DbQuery& o) const
    {
        return queries == o.queries && values == o.values && transaction == o.transaction
            && timeoutMs == o.timeoutMs;
    }
};

// The rows of one statement. The cell of row r and column c is cells[r * columnCount + c].
struct VDPLATFORM_EXPORT DbResult
{
    int affected = 0;
    int rowCount = 0;
    int columnCount = 0;
    QVector<QVariant> cells;
    QVector<QString> columnNames;

    // The cell, or an invalid value beyond the data.
    QVariant cell(int row, int column) const;

    bool operator==(const DbResult& o) const
    {
        return affected == o.affected && rowCount == o.rowCount && columnCount == o.columnCount
            && cells == o.cells && columnNames == o.columnNames;
    }
};

VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const DbPreparedQueryValue& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, DbPreparedQueryValue& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const DbQuery& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, DbQuery& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const DbResult& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, DbResult& r);

Q_DECLARE_METATYPE(DbQuery)
Q_DECLARE_METATYPE(DbResult)
