#pragma once

#include "objectinfo.h"

#include <QList>
#include <QString>

#include <algorithm>

// The stream of operations of the fault test, in families of six that build on each other. The
// operation `seq` is the kind seq % 6 of the family seq / 6:
//
//   0  hire the family's worker, numbered "F<family>"
//   1  grant him three access groups at once
//   2  issue him two cards at once
//   3  raise a request "F<family>" for him on the visitors' confirm list
//   4  petrov confirms it
//   5  in an odd family, remove the worker with his cards; in an even one, sidorova confirms
//
// A worker started again begins with the next whole family: what an interrupted family left
// undone stays undone.
namespace faultplan {

constexpr int Kinds = 6;
enum Kind { Hire, Grant, Issue, Raise, Confirm, Finish };

constexpr int GroupsGranted = 3;
constexpr int CardsIssued = 2;

inline int family(int seq) { return seq / Kinds; }
inline Kind kind(int seq) { return Kind(seq % Kinds); }
inline bool removesWorker(int family) { return family % 2 == 1; }
inline int firstOfFamilyAfter(int seq) { return (family(seq) + 1) * Kinds; }

inline QString tag(int family) { return QStringLiteral("F%1").arg(family); }
// The access groups that every family grants: the first by uid of those that the hired worker
// doesn't get from his department, so that the two can be told apart.
inline QList<vorandel::TYPE_ID> grantedGroups(QList<vorandel::TYPE_ID> groups, const vorandel::ObjectInfo& department)
{
    const QList<vorandel::INHERIT_DATA> links = department.inherits.values(7);
    for (const vorandel::INHERIT_DATA& link : links)
        groups.removeAll(link.second);
    std::sort(groups.begin(), groups.end());
    return groups.mid(0, GroupsGranted);
}
inline vorandel::CARD_ID cardNumber(int family, int card)
{
    return vorandel::CARD_ID(7000000000ull) + vorandel::CARD_ID(family) * CardsIssued + vorandel::CARD_ID(card);
}

}  // namespace faultplan
