#include "vdglobals.h"

#include "constants.h"

#include <QCoreApplication>

namespace {
template <typename Hash>
QString text(const Hash& parameters, const QString& key)
{
    const auto it = parameters.constFind(key);
    if (it == parameters.cend())
        return {};
    if constexpr (std::is_same_v<typename Hash::mapped_type, QVariant>)
        return it.value().toString();
    else
        return it.value();
}

template <typename Hash>
QString fullName(const Hash& parameters)
{
    return QStringLiteral("%1 %2 %3")
        .arg(text(parameters, QStringLiteral("PT_SURNAME")), text(parameters, QStringLiteral("PT_NAME")),
             text(parameters, QStringLiteral("PT_PATRONYMIC")))
        .simplified();
}

template <typename Hash>
QString nameOf(const QString& type, const Hash& parameters)
{
    if (type == db::orgstructure::WORKER)
        return fullName(parameters);
    if (type == db::user::USER) {
        const QString login = text(parameters, QStringLiteral("PT_LOGIN"));
        return login.isEmpty() ? fullName(parameters) : login;
    }
    if (type == db::misc::CARD)
        return text(parameters, db::card::NUMBER);
    if (type == db::misc::PASS_REQUEST) {
        const QString visitor = fullName(parameters);
        if (!visitor.isEmpty())
            return visitor;
        const QString number = text(parameters, db::pass_request::PASSID);
        return number.isEmpty() ? QString() : QCoreApplication::translate("VDGlobals", "Заявка № %1").arg(number);
    }
    const QString name = text(parameters, QStringLiteral("PT_NAME"));
    return name.isEmpty() ? fullName(parameters) : name;
}
}  // namespace

QString VDGlobals::objectName(const vorandel::ObjectInfo& info)
{
    return nameOf(info.type, info.parameters);
}

QString VDGlobals::objectName(const QString& type, const QHash<QString, QString>& parameters)
{
    return nameOf(type, parameters);
}

QString VDGlobals::objectName(const QString& type, const QHash<QString, QVariant>& parameters)
{
    return nameOf(type, parameters);
}
