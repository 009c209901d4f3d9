#include "requestview.h"

#include "requestview_p.h"

#include "constants.h"
#include "dbquery.h"
#include "requestviewlogging.h"
#include "vd5sdkdata.h"
#include "vd5sdkdevices.h"
#include "vddatastream.h"
#include "vdguiglobals.h"

#include <QMessageBox>
#include <QTime>

using namespace vorandel;
using namespace requestview::detail;

// --- worker fingerprints and card reading ----------------------------------------------------

void RequestView::sendGetWorkerFingers(QList<TYPE_ID> uids)
{
    QStringList numbers;
    for (const TYPE_ID uid : qAsConst(uids))
        numbers.append(QString::number(uid));
    DbQuery query;
    query.queries.append(
        QStringLiteral("SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 "
                       "AND parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( "
                       "ARRAY[%1]::bigint[] ) GROUP BY user_object_id;")
            .arg(numbers.join(QLatin1Char(','))));
    Command command = newCommand(QStringLiteral("db.async"), 8);
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << d->clientId << QStringLiteral("get_fingers_%1").arg(QTime::currentTime().toString(QStringLiteral("hhmmsszzz")))
        << query;
    qCDebug(rvc) << "SEND" << query.queries;
    sendQuery(command, bind(&RequestView::asyncHandler));
}

void RequestView::getFingersHandler(Command& command)
{
    QString id;
    int status = 0;
    QString error;
    QList<DbResult> results;
    VDDataStream in(command.data);
    in >> id >> status >> error >> results;
    if (status != Command::StatusOk) {
        qCWarning(rvc) << "fail" << error;
        return;
    }
    if (results.isEmpty())
        return;
    const DbResult& rows = results.first();
    // The counts of rows and columns are the answer's claims; the rows are as many as its cells
    // make, the last perhaps short, whatever the claims.
    const qint64 carried =
        rows.columnCount > 0 ? (qint64(rows.cells.size()) + rows.columnCount - 1) / rows.columnCount : 0;
    const int rowCount = int(qMin<qint64>(rows.rowCount, carried));
    QHash<TYPE_ID, requestview::UserFingers> fingers;
    for (int row = 0; row < rowCount; ++row) {
        requestview::UserFingers entry;
        entry.worker = rows.cell(row, 0).toUInt();
        entry.count = rows.cell(row, 1).toInt();
        entry.card = rows.cell(row, 2).toUInt();
        fingers.insert(entry.worker, entry);
    }
    emit fingersReceived(fingers);
}

void RequestView::fingerInfoRead(Command& command)
{
    if (command.status != Command::StatusOk) {
        emptyHandler(command);
        return;
    }
    QMap<unsigned int, TEMPLATE_DATA> templates;
    VDDataStream in(command.data);
    in >> templates;
    const QList<unsigned int> workers = templates.uniqueKeys();
    for (const unsigned int worker : workers) {
        unsigned int fingers = 0, palms = 0, airPalms = 0, faces = 0;
        const QList<TEMPLATE_DATA> own = templates.values(worker);
        for (const TEMPLATE_DATA& t : own) {
            if (t.index >= 0 && t.index <= 9)
                ++fingers;
            else if ((t.index == 100 || t.index == 101) && t.kind == 2)
                ++palms;
            else if ((t.index == 100 || t.index == 101) && t.kind == 3)
                ++airPalms;
            else if (t.index == 200 || t.index == 201)
                ++faces;
        }
        QVariantMap counts;
        counts.insert(QStringLiteral("fingers_count"), fingers);
        counts.insert(QStringLiteral("palm_count"), palms);
        counts.insert(QStringLiteral("airpalm_count"), airPalms);
        counts.insert(QStringLiteral("face_count"), faces);
        emit workerFingers(worker, counts);
    }
}

void RequestView::editFingerptints(TYPE_ID uid)
{
    Command command = newCommand();
    command.name = QStringLiteral("show:fingerprintwidget");
    command.type = 8;
    VDDataStream out(&command.data, QIODevice::WriteOnly);
    out << uid << d->clientId;
    sendQuery(command, bind(&RequestView::editBiometricsHandler));
}

void RequestView::editBiometricsHandler(Command& command)
{
    if (command.status == Command::StatusBiometricsLocked)
        QMessageBox::information(VDGuiGlobals::vdApp, tr("Персональные данные"),
                                 tr("Запрещено редактирование биометрической информации"), QMessageBox::Ok);
}

void RequestView::fingerprintDialogClosedHandler(Command& command)
{
    command.status = Command::StatusOk;
    qint32 worker = 0;
    VDDataStream in(command.data);
    in >> worker;
    if (in.atEnd()) {
        qCDebug(rvc) << "Templates none";
    } else {
        QList<TEMPLATE_DATA> templates;
        in >> templates;
        qCDebug(rvc) << "Templates" << templates.size();
        emit workerFingersScanned(TYPE_ID(worker), templates);
    }
    if (d->currentWorker != 0 && d->dataService)
        d->dataService->getUserFingers({d->currentWorker}, bind(&RequestView::fingerInfoRead));
}

void RequestView::sendReadCard(TYPE_ID dev)
{
    if (!d->deviceService)
        return;
    d->deviceService->bind(dev, {DEVICE_COMMAND_READ_CARD}, bind(&RequestView::emptyHandler));
    d->deviceService->readCard(dev, bind(&RequestView::emptyHandler));
}
