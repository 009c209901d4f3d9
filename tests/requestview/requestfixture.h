#pragma once

#include "faketransport.h"
#include "objectinfo.h"
#include "testenvironment.h"

#include <QList>
#include <QStringList>

#include <memory>

class RequestView;
class QAction;
class VDTableView;
class QAbstractItemModel;

// Builders of store objects with the keys the tab reads.
namespace make {
vorandel::ObjectInfo request(vorandel::TYPE_ID uid, int state, vorandel::TYPE_ID worker = 0);
vorandel::ObjectInfo worker(vorandel::TYPE_ID uid, const QString& surname, const QString& name = QString(),
                            const QString& patronymic = QString(), const QString& number = QString());
vorandel::ObjectInfo policy(vorandel::TYPE_ID uid, const QString& name);
// Adds approvers (users) with priorities to the chain of a request, then who has confirmed.
void chain(vorandel::ObjectInfo& request, const QList<QPair<vorandel::TYPE_ID, unsigned int>>& approvers);
void decided(vorandel::ObjectInfo& request, vorandel::TYPE_ID user, unsigned int type);
}  // namespace make

// A tab built the way the console builds it, over a store filled by the test, with a fake
// exchange behind it.
class RequestFixture
{
public:
    explicit RequestFixture(unsigned int userId = 1, const QStringList& roles = TestEnvironment::allRoles());
    ~RequestFixture();

    // Fills the store (before build()), or changes it (after: the tab follows).
    void set(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);
    // Creates the tab: instance, init, insertedToInterface.
    RequestView* build();

    RequestView* view() const { return m_view.get(); }
    FakeTransport& transport() { return m_transport; }
    VDTableView* table() const;
    QAbstractItemModel* rows() const;  // what the table shows
    QAction* action(const char* name) const;
    QList<vorandel::TYPE_ID> shownUids() const;
    void select(const QList<vorandel::TYPE_ID>& uids);  // in this order

private:
    TestEnvironment m_environment;
    FakeTransport m_transport;
    std::unique_ptr<RequestView> m_view;
};
