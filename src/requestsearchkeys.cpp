#include "requestsearchkeys.h"

#include "constants.h"
#include "requestmodel.h"

#include <QDateTime>

using namespace vorandel;

namespace {

const QString KeyWorkerNumber = QStringLiteral("PT_WORKERNUM");
const QString KeySurname = QStringLiteral("PT_SURNAME");
const QString KeyName = QStringLiteral("PT_NAME");
const QString KeyPatronymic = QStringLiteral("PT_PATRONYMIC");
const QString KeyDateBegin = QStringLiteral("PT_DATE_BEGIN");
const QString KeyDateEnd = QStringLiteral("PT_DATE_END");

}  // namespace

RequestSearchKeys::Worker RequestSearchKeys::workerOf(const ObjectInfo& request)
{
    return texts(RequestModel::workerOf(request));
}

RequestSearchKeys::Worker RequestSearchKeys::texts(const ObjectInfo& workerRecord)
{
    const auto& worker = workerRecord.parameters;
    return {worker.value(KeyWorkerNumber), worker.value(KeySurname), worker.value(KeyName), worker.value(KeyPatronymic)};
}

void RequestSearchKeys::appendNameKeys(KeyList& keys, const Worker& worker)
{
    for (const QString* part : {&worker.surname, &worker.name, &worker.patronymic})
        Index::forEachWord(part->toLower(), [&keys](const QString& word) { keys.append(word); });
}

void RequestSearchKeys::appendOwnKeys(KeyList& keys, const ObjectInfo& request, const QString& workerNumber)
{
    keys.append(workerNumber.toLower());
    keys.append(request.parameters.value(db::pass_request::PASSID).toLower());
    keys.append(dateKey(request.parameters.value(KeyDateBegin)));
    keys.append(dateKey(request.parameters.value(KeyDateEnd)));
}

void RequestSearchKeys::reindex(Index& index, vorandel::TYPE_ID uid, const ObjectInfo& request, const Worker& worker)
{
    index.remove(uid);
    KeyList keys;
    appendNameKeys(keys, worker);
    appendOwnKeys(keys, request, worker.number);
    for (const QString& key : qAsConst(keys))
        index.add(key, uid);
}

RequestSearchKeys::Index::Batch RequestSearchKeys::gatherOwnKeys(const OBJECT_HASH* requests)
{
    Index::Batch batch;
    // Most of these keys belong to one request: its number and its dates.
    batch.reserve(requests->size() * 2, requests->size() * 4);
    for (auto it = requests->cbegin(); it != requests->cend(); ++it) {
        const ObjectInfo& request = it.value();
        KeyList keys;
        appendOwnKeys(keys, request, RequestModel::workerOf(request).parameters.value(KeyWorkerNumber));
        for (const QString& key : qAsConst(keys))
            batch.add(key, request.uid);
    }
    return batch;
}

// Rearranging the digits of the stored form gives the same text as a round trip through QDateTime
// at a fraction of the cost, which counts when a hundred thousand requests are indexed.
QString RequestSearchKeys::dateKey(const QString& iso)
{
    static const QString Format = QStringLiteral("dd.MM.yyyy hh:mm:ss");
    if (iso.size() == 19 && iso.at(4) == QLatin1Char('-') && iso.at(7) == QLatin1Char('-')
        && iso.at(10) == QLatin1Char('T') && iso.at(13) == QLatin1Char(':') && iso.at(16) == QLatin1Char(':')) {
        const auto number = [&iso](int from, int length, bool* ok) {
            int value = 0;
            for (int i = from; i < from + length; ++i) {
                const QChar c = iso.at(i);
                if (c < QLatin1Char('0') || c > QLatin1Char('9'))
                    *ok = false;
                value = value * 10 + (c.unicode() - '0');
            }
            return value;
        };
        bool ok = true;
        const int year = number(0, 4, &ok), month = number(5, 2, &ok), day = number(8, 2, &ok);
        const int hour = number(11, 2, &ok), minute = number(14, 2, &ok), second = number(17, 2, &ok);
        if (ok && QDate::isValid(year, month, day) && QTime::isValid(hour, minute, second)) {
            QString text;
            text.reserve(19);
            text.append(iso.midRef(8, 2)).append(QLatin1Char('.')).append(iso.midRef(5, 2)).append(QLatin1Char('.'));
            text.append(iso.midRef(0, 4)).append(QLatin1Char(' ')).append(iso.midRef(11, 8));
            return text;
        }
    }
    return QDateTime::fromString(iso, Qt::ISODate).toString(Format);
}
