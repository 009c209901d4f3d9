#include "ourtable.h"

#include "benchlogging.h"
#include "eventloop.h"
#include "requestview.h"
#include "vdserverinterface.h"

#include <QTableView>

OurTable::OurTable() : m_view(std::make_unique<RequestView>())
{
    m_view->init(VDServerInterface::instance(), QStringLiteral("bench"));
}

OurTable::~OurTable() = default;

void OurTable::load()
{
    m_view->insertedToInterface();
    m_table = m_view->findChild<QTableView*>(QStringLiteral("tblRequests"));
    if (!m_table) {
        qCWarning(lcBench) << "fail: the tab has no table tblRequests";
        return;
    }
    m_view->resize(1280, 800);
    if (!showUntilPainted(m_view.get(), m_table->viewport()))
        qCWarning(lcBench) << "fail: the tab was not painted";
}

void OurTable::search(const QString& text)
{
    // What the search field does; the slot is private to the tab.
    QMetaObject::invokeMethod(m_view.get(), "filter", Q_ARG(QString, text));
}

void OurTable::sort(int column, Qt::SortOrder order)
{
    if (m_table)
        m_table->sortByColumn(column, order);
}

int OurTable::shownRows() const
{
    return m_table && m_table->model() ? m_table->model()->rowCount() : 0;
}
