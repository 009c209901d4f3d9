#include "schema.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

// Resources of a static library are not registered by themselves.
static void initSchemaResource()
{
    Q_INIT_RESOURCE(schema);
}

namespace vdserver {

namespace {
const QString Folder = QStringLiteral(":/vdserver/schema");

struct File
{
    int version = 0;
    QString name;
    QString path;
};

QList<File> files()
{
    static const QList<File> all = [] {
        initSchemaResource();
        static const QRegularExpression Name(QStringLiteral(R"(^(\d+)_(\w+)\.sql$)"));
        QList<File> found;
        const QStringList names = QDir(Folder).entryList(QDir::Files, QDir::Name);
        for (const QString& name : names) {
            const QRegularExpressionMatch match = Name.match(name);
            if (match.hasMatch())
                found.append({match.captured(1).toInt(), match.captured(2), Folder + QLatin1Char('/') + name});
        }
        std::sort(found.begin(), found.end(), [](const File& a, const File& b) { return a.version < b.version; });
        return found;
    }();
    return all;
}

// The statements of a file, without its comments, with the words of the dialect filled in.
QStringList statements(const QString& path, StoreLocation::Engine engine)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    QString text = QString::fromUtf8(file.readAll());
    static const QRegularExpression Comment(QStringLiteral("--[^\n]*"));
    text.remove(Comment);
    const bool sqlite = engine == StoreLocation::Engine::SQLite;
    text.replace(QLatin1String("${UID}"), sqlite ? QLatin1String("INTEGER") : QLatin1String("BIGINT"));
    text.replace(QLatin1String("${BLOB}"), sqlite ? QLatin1String("BLOB") : QLatin1String("BYTEA"));
    text.replace(QLatin1String("${SERIAL}"), sqlite ? QLatin1String("INTEGER PRIMARY KEY AUTOINCREMENT")
                                                    : QLatin1String("BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY"));
    QStringList result;
    const QStringList parts = text.split(QLatin1Char(';'));
    for (const QString& part : parts) {
        const QString statement = part.trimmed();
        if (!statement.isEmpty())
            result.append(statement);
    }
    return result;
}
}  // namespace

int Schema::latestVersion()
{
    const QList<File> all = files();
    return all.isEmpty() ? 0 : all.last().version;
}

QList<Schema::Migration> Schema::after(int version, StoreLocation::Engine engine)
{
    QList<Migration> migrations;
    const QList<File> all = files();
    for (const File& file : all) {
        if (file.version > version)
            migrations.append({file.version, file.name, statements(file.path, engine)});
    }
    return migrations;
}

}  // namespace vdserver
