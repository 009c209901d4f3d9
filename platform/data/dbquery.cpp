#include "dbquery.h"

#include "vddatastream.h"

QVariant DbResult::cell(int row, int column) const
{
    const qsizetype at = qsizetype(row) * columnCount + column;
    if (row < 0 || column < 0 || column >= columnCount || at >= cells.size())
        return {};
    return cells.at(int(at));
}

QDataStream& operator<<(QDataStream& out, const DbPreparedQueryValue& r)
{
    return out << r.value << r.output;
}

QDataStream& operator>>(QDataStream& in, DbPreparedQueryValue& r)
{
    vdstream::readAll(in, r.value, r.output);
    return in;
}

QDataStream& operator<<(QDataStream& out, const DbQuery& r)
{
    return out << r.queries << r.values << r.transaction << qint32(r.timeoutMs);
}

QDataStream& operator>>(QDataStream& in, DbQuery& r)
{
    qint32 timeout = 0;
    vdstream::readAll(in, r.queries, r.values, r.transaction, timeout);
    r.timeoutMs = timeout;
    return in;
}

QDataStream& operator<<(QDataStream& out, const DbResult& r)
{
    return out << qint32(r.affected) << qint32(r.rowCount) << qint32(r.columnCount) << r.cells << r.columnNames;
}

QDataStream& operator>>(QDataStream& in, DbResult& r)
{
    qint32 affected = 0, rows = 0, columns = 0;
    vdstream::readAll(in, affected, rows, columns, r.cells, r.columnNames);
    r.affected = affected;
    r.rowCount = rows;
    r.columnCount = columns;
    return in;
}
