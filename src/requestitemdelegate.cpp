#include "requestitemdelegate.h"

#include "constants.h"
#include "localstorage.h"
#include "requestviewlogging.h"
#include "vdglobals.h"

namespace {
constexpr int ParametersRole = Qt::UserRole + 1;
}  // namespace

RequestItemDelegate::RequestItemDelegate(QObject* parent) : StyledItemDelegate(parent) {}

QString RequestItemDelegate::name(const QModelIndex& index) const
{
    const QAbstractItemModel* model = index.model();
    if (!model)
        return {};
    const QString type = model->data(index.siblingAtColumn(1), Qt::DisplayRole).toString();
    const QHash<QString, QVariant> parameters = model->data(index, ParametersRole).toHash();
    const QString name = VDGlobals::objectName(type, parameters);

    // The same rule as the removal itself follows: only then is a worker dismissed.
    const auto dismiss = parameters.constFind(db::pass_request::DISMISS_LINKED);
    const auto subject = parameters.constFind(QStringLiteral("PT_SUBJECT_ID"));
    if (dismiss == parameters.cend() || dismiss.value() != QVariant(QStringLiteral("true"))
        || subject == parameters.cend()) {
        qCDebug(rvc) << "Linked employee doesn't found or it's unnecessary to dissmis him.";
        return name;
    }
    const vorandel::ObjectInfo& worker =
        vorandel::LocalStorage::instance()->constObject(subject.value().toInt(), vorandel::SUBJECT_DATANAME);
    if (worker.parameters.value(QStringLiteral("PT_OBJECTSTATE")) == QLatin1String("d")) {
        qCDebug(rvc) << "Linked employee are already dismissed";
        return name;
    }
    const QString workerName = VDGlobals::objectName(worker);
    if (workerName.isEmpty())
        return name;
    return name + tr(" Будет уволен сотрудник %1").arg(workerName);
}
