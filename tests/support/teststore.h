#pragma once

#include "storelocation.h"

#include <QApplication>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

// The store that a suite of the server runs against. A suite runs on SQLite, and on PostgreSQL
// when ctest runs it with VD_TEST_ENGINE=postgresql; then VD_TEST_POSTGRESQL is the address of a
// database in which it may make schemas and drop them (scripts/test.sh starts a private cluster
// and sets it).
class TestStore
{
public:
    static vdserver::StoreLocation::Engine engine();
    static bool onPostgres() { return engine() == vdserver::StoreLocation::Engine::PostgreSQL; }
    // For main(): nullopt when the suite can run; otherwise the exit code, having said why:
    // ctest's code for a skipped test when no PostgreSQL was given, failure when the one given
    // can't be reached.
    static std::optional<int> checkEngine();

    // A fresh, empty store of the engine under test: a file in a folder of its own, or a schema
    // of its own. Both go with this object.
    TestStore();
    ~TestStore();
    Q_DISABLE_COPY(TestStore)

    vdserver::StoreLocation location() const { return m_location; }
    // The location as --database takes it.
    QString address() const { return m_address; }
    // Runs statements on the store behind the server's back, where the server lets it (an SQLite
    // file only when no server holds it): the first column of the last one's rows, or nullopt,
    // with `error` saying why, when one fails.
    std::optional<QStringList> execute(const QStringList& statements, QString* error = nullptr) const;

private:
    QTemporaryDir m_folder;
    QString m_schema;
    QString m_address;
    vdserver::StoreLocation m_location;
};

// QTEST_MAIN for the suites that run on either engine.
#define VD_STORE_TEST_MAIN(TestObject)                                                                 \
    int main(int argc, char* argv[])                                                                   \
    {                                                                                                  \
        QApplication app(argc, argv);                                                                  \
        if (const std::optional<int> exitCode = TestStore::checkEngine())                              \
            return *exitCode;                                                                          \
        TestObject test;                                                                               \
        QTEST_SET_MAIN_SOURCE_PATH                                                                     \
        return QTest::qExec(&test, argc, argv);                                                        \
    }
