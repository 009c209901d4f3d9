#include "storelocation.h"

#include <QDir>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>

namespace vdserver {

namespace {
QString decoded(const QString& text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}
}  // namespace

StoreLocation StoreLocation::file(const QString& path)
{
    StoreLocation location;
    location.m_path = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    return location;
}

std::optional<StoreLocation> StoreLocation::parse(const QString& text, QString* error)
{
    static const QRegularExpression Scheme(QStringLiteral("^postgres(ql)?://"),
                                           QRegularExpression::CaseInsensitiveOption);
    if (!Scheme.match(text).hasMatch()) {
        if (text.trimmed().isEmpty()) {
            *error = tr("The store needs a file name or a postgresql:// address.");
            return std::nullopt;
        }
        return file(text);
    }

    // Not QUrl: a socket folder or an empty host are fine here and not to a URL parser.
    static const QRegularExpression Url(QStringLiteral(
        R"(^postgres(?:ql)?://(?:([^:@/?]*)(?::([^@/?]*))?@)?([^:/?]*)(?::([^/?]*))?(?:/([^?]*))?(?:\?(.*))?$)"),
                                        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = Url.match(text);
    if (!match.hasMatch()) {
        *error = tr("'%1' is not a PostgreSQL address of the form postgresql://USER@HOST:PORT/DBNAME.").arg(text);
        return std::nullopt;
    }
    StoreLocation location;
    location.m_engine = Engine::PostgreSQL;
    location.m_user = decoded(match.captured(1));
    location.m_password = decoded(match.captured(2));
    location.m_host = decoded(match.captured(3));
    QString port = match.captured(4);
    location.m_databaseName = decoded(match.captured(5));

    const QStringList pairs = match.captured(6).split(QLatin1Char('&'), Qt::SkipEmptyParts);
    for (const QString& pair : pairs) {
        const int equals = pair.indexOf(QLatin1Char('='));
        const QString key = decoded(pair.left(equals)).trimmed();
        if (equals <= 0 || key.isEmpty()) {
            *error = tr("'%1' in the address '%2' is not of the form KEY=VALUE.").arg(pair, text);
            return std::nullopt;
        }
        const QString value = decoded(pair.mid(equals + 1));
        if (key == QLatin1String("host"))
            location.m_host = value;
        else if (key == QLatin1String("port"))
            port = value;
        else if (key == QLatin1String("user"))
            location.m_user = value;
        else if (key == QLatin1String("password"))
            location.m_password = value;
        else if (key == QLatin1String("dbname"))
            location.m_databaseName = value;
        else
            location.m_options.insert(key, value);
    }
    if (!port.isEmpty()) {
        bool number = false;
        location.m_port = port.toInt(&number);
        if (!number || location.m_port <= 0 || location.m_port > 65535) {
            *error = tr("'%1' in the address '%2' is not a port number.").arg(port, text);
            return std::nullopt;
        }
    }
    if (location.m_options.contains(QStringLiteral("connect_timeout"))) {
        bool number = false;
        location.m_options.value(QStringLiteral("connect_timeout")).toInt(&number);
        if (!number) {
            *error = tr("connect_timeout in the address '%1' is not a number of seconds.").arg(text);
            return std::nullopt;
        }
    }
    return location;
}

int StoreLocation::connectTimeoutSeconds() const
{
    return m_options.value(QStringLiteral("connect_timeout"), QString::number(DefaultConnectTimeoutSeconds)).toInt();
}

bool StoreLocation::operator==(const StoreLocation& other) const
{
    return m_engine == other.m_engine && m_path == other.m_path && m_host == other.m_host && m_port == other.m_port
        && m_user == other.m_user && m_password == other.m_password && m_databaseName == other.m_databaseName
        && m_options == other.m_options;
}

QString StoreLocation::displayName() const
{
    if (m_engine == Engine::SQLite)
        return inMemory() ? tr("a store in memory") : QDir::toNativeSeparators(m_path);
    const bool socket = m_host.startsWith(QLatin1Char('/'));
    QString url = QStringLiteral("postgresql://");
    if (!m_user.isEmpty())
        url += m_user + QLatin1Char('@');
    if (!socket)
        url += m_host;
    if (m_port > 0 && !socket)
        url += QLatin1Char(':') + QString::number(m_port);
    url += QLatin1Char('/') + m_databaseName;
    QStringList query;
    if (socket) {
        query << QStringLiteral("host=") + m_host;
        if (m_port > 0)
            query << QStringLiteral("port=") + QString::number(m_port);
    }
    for (auto it = m_options.cbegin(); it != m_options.cend(); ++it)
        query << it.key() + QLatin1Char('=') + it.value();
    return query.isEmpty() ? url : url + QLatin1Char('?') + query.join(QLatin1Char('&'));
}

QString StoreLocation::address() const
{
    const QString host = m_host.isEmpty() ? tr("the local socket") : m_host;
    return m_port > 0 ? QStringLiteral("%1:%2").arg(host).arg(m_port) : host;
}

}  // namespace vdserver
