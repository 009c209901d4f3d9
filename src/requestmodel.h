#pragma once

#include "constants.h"
#include "objecttreemodel.h"

#include <QColor>
#include <QIcon>
#include <QList>
#include <QStringList>

#include <array>

// The rows of the request table. A row holds a copy of its request, but most cells are worked
// out from the object store at the moment the view asks, so that a change of a worker, a user
// or an access group shows at the next repaint. Only the personnel number and the full name
// (columns 4 and 5) are written into the row by its owner.
//
// Column numbers are fixed, and the tab's other parts know them by number. The biometrics and
// cards columns are headings only: nothing fills them.
class RequestModel : public ObjectTreeModel
{
    Q_OBJECT
public:
    enum Column {
        UidColumn,
        StateColumn,
        NumberColumn,
        CreatedColumn,
        WorkerNumberColumn,
        NameColumn,
        BiometricsColumn,
        CardsColumn,
        BeginColumn,
        EndColumn,
        ConfirmerColumn,
        ConvoyColumn,
        CreatorColumn,
        AccessGroupsColumn,
        CarBrandColumn,
        CarTypeColumn,
        CarNumberColumn,
        DepartmentColumn,
        OrganisationColumn,
        ColumnCount
    };

    explicit RequestModel(QObject* parent);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // A new state (column 1) repaints the whole row, whose background follows it.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QVariant columnData(const vorandel::ObjectInfo& info, int column) const override;

    // The icon of a state; an empty icon for a value that is no state.
    QIcon iconByStatus(int status) const;
    // The row colour of a state; invalid for the states that keep the view's own.
    QColor backgroundByStatus(int status) const;

    // Rules of a request that the information card shares with the table.

    // The worker that a request is for ("PT_SUBJECT_ID"); an invalid record when he is not in
    // the store.
    static const vorandel::ObjectInfo& workerOf(const vorandel::ObjectInfo& request);
    // A console user as the operator knows him: his login, and his full name in brackets when
    // his record has one.
    static QString userText(const vorandel::ObjectInfo& user);
    // The names of the request's access groups ("PT_WAY"), sorted. A group that is no longer in
    // the store keeps its place as an empty name.
    static QStringList accessGroupNames(const vorandel::ObjectInfo& request);
    // The request's confirmers (links of type 23) in the order of their turns.
    static QList<vorandel::INHERIT_DATA> confirmChain(const vorandel::ObjectInfo& request);

private:
    enum Icon {
        NotConfirmedIcon,
        RejectedIcon,
        ConfirmedIcon,
        ActiveIcon,
        FinishedIcon,
        WorkerIcon,
        DismissedWorkerIcon,
        UserIcon,
        BiometricsIcon,
        CardIcon,
        IconCount
    };
    const QIcon& icon(Icon which) const;
    QString stateName(int state) const;
    QString convoyRole(const vorandel::ObjectInfo& worker) const;

    // The request of the row as the store holds it now; an empty record when it is gone.
    const vorandel::ObjectInfo& storedRequest(const QModelIndex& index) const;
    QVariant displayData(const QModelIndex& index) const;

    // Made at first use, and again after the icon theme has changed: the console may install
    // its theme after the table is built.
    mutable QString m_iconTheme;
    mutable std::array<QIcon, IconCount> m_icons;
    // Texts that every repaint asks for, translated once.
    mutable std::array<QString, vorandel::PASS_REQUEST_STATE_FINISHED + 1> m_stateNames;
    mutable std::array<QString, 3> m_convoyRoles;
};
