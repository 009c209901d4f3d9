#pragma once

#include "objectinfo.h"

#include <QLatin1String>
#include <QString>

// Names of the object store: datanames, object types, parameter keys, link types and the
// states of a pass request, with the few rules every reader of a request shares.
namespace vorandel {

// Datanames of the store.
inline const QString PASS_REQUEST_DATANAME = QStringLiteral("pass_request");
inline const QString SUBJECT_DATANAME = QStringLiteral("subject");
inline const QString USER_DATANAME = QStringLiteral("user");
inline const QString POLICY_DATANAME = QStringLiteral("policy");
inline const QString ORGSTRUCTURE_DATANAME = QStringLiteral("orgstructure");
inline const QString CONFIRM_LIST_DATANAME = QStringLiteral("confirm_list");
inline const QString CARD_DATANAME = QStringLiteral("card");
inline const QString DEVICE_DATANAME = QStringLiteral("device");
inline const QString JOB_DATANAME = QStringLiteral("job");

// Search indices of the store (LocalStorage::index).
inline const QString SUBJECT_WORKERNUM_INDEX = QStringLiteral("subject.workernum");
inline const QString SUBJECT_SURNAME_INDEX = QStringLiteral("subject.surname");

// Device commands.
inline const QString DEVICE_COMMAND_READ_CARD = QStringLiteral("read_card");

// Link types: keys of ObjectInfo::inherits.
constexpr unsigned int INHERIT_CARD = 3;                          // worker -> his cards
constexpr unsigned int INHERIT_CONFIRM_LIST_PASS_REQUEST = 23;    // request -> who must confirm
constexpr unsigned int INHERIT_CONFIRMED_LIST_PASS_REQUEST = 24;  // request -> who has confirmed
constexpr unsigned int INHERIT_REJECTED_LIST_PASS_REQUEST = 25;   // request -> who has rejected

// The state of a pass request, stored as decimal text in "PT_STATE".
enum PassRequestState : int {
    PASS_REQUEST_STATE_NOT_CONFIRMED = 0,
    PASS_REQUEST_STATE_REJECTED = 1,
    PASS_REQUEST_STATE_CONFIRMED = 2,
    PASS_REQUEST_STATE_CONFIRMED_ALT = 3,  // set by the server only; shown as confirmed
    PASS_REQUEST_STATE_ACTIVE = 4,
    PASS_REQUEST_STATE_FINISHED = 5,
};

// A worker is dismissed when "PT_OBJECTSTATE" is exactly "d".
VDPLATFORM_EXPORT bool isDismissed(const ObjectInfo& worker);
// Only a request that is not yet confirmed (or carries a negative state) may be edited.
constexpr bool editable(int state) { return unsigned(state - 1) > 4u; }
// Any request but an active one may be removed.
constexpr bool removable(int state) { return state != PASS_REQUEST_STATE_ACTIVE; }

}  // namespace vorandel

namespace db {

namespace misc {
inline const QString PASS_REQUEST = QStringLiteral("OT_PASS_REQUEST");
inline const QString CARD = QStringLiteral("OT_CARD");
}  // namespace misc

namespace orgstructure {
inline const QString WORKER = QStringLiteral("OT_WORKER");
inline const QString SUBJECT_ROOT = QStringLiteral("OT_SUBJECTROOT");
inline const QString FIRM = QStringLiteral("OT_FIRM");
inline const QString DEPARTMENT = QStringLiteral("OT_DEPARTMENT");
}  // namespace orgstructure

namespace access {
inline const QString POLICY = QStringLiteral("OT_ACCESS_POLICY");
}  // namespace access

namespace user {
inline const QString USER = QStringLiteral("OT_USER");
}  // namespace user

// Keys of a pass request that have a constant; the others are used as bare literals.
namespace pass_request {
inline const QString PASSID = QStringLiteral("PT_PASSID");
inline const QString STATE = QStringLiteral("PT_STATE");
inline const QString CREATE_DATE = QStringLiteral("PT_DATE");
inline const QString CREATOR = QStringLiteral("PT_CREATOR");
inline const QString CONFIRM_LIST = QStringLiteral("PT_CONFIRM_LIST");
inline const QString CONVOY = QStringLiteral("PT_CONVOY");
inline const QString DISMISS_LINKED = QStringLiteral("PT_DISMISS_LINKED");
inline const QString LAST_NAME = QStringLiteral("PT_SURNAME");
inline const QString MIDDLE_NAME = QStringLiteral("PT_PATRONYMIC");
inline const QString WORKERNUM = QStringLiteral("PT_PASS_REQUEST_WORKERNUM");
inline const QString DOC_TYPE = QStringLiteral("PT_DOC_TYPE");
inline const QString DOC_SERIES = QStringLiteral("PT_DOC_SERIES");
inline const QString DOC_NUMBER = QStringLiteral("PT_DOC_NUMBER");
inline const QString EXTRA_INFO = QStringLiteral("PT_EXTRA_INFO");
inline const QString FROM_ORGANIZATION = QStringLiteral("PT_FROM_ORGANIZATION");
inline const QString TO_DEPARTMENT = QStringLiteral("PT_TO_DEPARTMENT");
}  // namespace pass_request

// Keys of the server's database object, and the two request keys it shares.
namespace database {
inline const QString PASS_FROM_ORGANIZATION = QStringLiteral("PT_FROM_ORGANIZATION");
inline const QString PASS_TO_DEPARTMENT = QStringLiteral("PT_TO_DEPARTMENT");
inline const QString DEFAULT_DEPARTMENT = QStringLiteral("PT_DEFAULT_DEPARTMENT");
inline const QString PASS_REQUEST_SEQUENCE = QStringLiteral("PT_PASS_REQUEST_SEQUENCE");
inline const QString PD_DENY_STORE_USER_PHOTOS = QStringLiteral("PT_PD_DENY_STORE_USER_PHOTOS");
}  // namespace database

// Keys of a card record.
namespace card {
inline const QString NUMBER = QStringLiteral("PT_CARD_NUMBER");
inline const QString OWNER = QStringLiteral("PT_SUBJECT_ID");
}  // namespace card

}  // namespace db

// Reading card records.
namespace ot_card {
// The worker that a card record names as its owner; 0 for none.
VDPLATFORM_EXPORT vorandel::TYPE_ID uid(const vorandel::ObjectInfo& card);
// The card number a record carries; 0 for none.
VDPLATFORM_EXPORT vorandel::CARD_ID number(const vorandel::ObjectInfo& card);
}  // namespace ot_card
