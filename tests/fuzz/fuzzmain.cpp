// The fuzzer of everything that reads bytes from the other side of the exchange: one libFuzzer
// program for all targets, the target chosen by VD_FUZZ_TARGET.
//
//   VD_FUZZ_TARGET=record.DbResult bin/vdfuzz -max_total_time=60 work/ fuzz/seeds/record.DbResult
//   bin/vdfuzz --list                 the targets
//   bin/vdfuzz --write-seeds DIR      a folder of valid payloads per target
//
// A crash, a sanitizer's report or a hang is saved by libFuzzer as an input; run the program on
// that file alone to see it again.

#include "fuzztarget.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

QList<FuzzTarget> allTargets()
{
    return recordTargets() + tabTargets() + serverTargets() + consoleTargets();
}

const FuzzTarget* selected = nullptr;

void printTargets(FILE* to)
{
    QTextStream out(to);
    for (const FuzzTarget& target : allTargets())
        out << target.name << '\n';
}

int writeSeeds(const QString& root)
{
    for (const FuzzTarget& target : allTargets()) {
        const QString folder = QDir(root).filePath(target.name);
        if (!QDir().mkpath(folder)) {
            QTextStream(stderr) << "vdfuzz: can't make " << folder << '\n';
            return 1;
        }
        const QList<QByteArray> seeds = target.seeds();
        for (int i = 0; i < seeds.size(); ++i) {
            QFile file(QDir(folder).filePath(QStringLiteral("seed-%1").arg(i)));
            if (!file.open(QIODevice::WriteOnly) || file.write(seeds.at(i)) != seeds.at(i).size()) {
                QTextStream(stderr) << "vdfuzz: can't write " << file.fileName() << ": " << file.errorString() << '\n';
                return 1;
            }
        }
    }
    return 0;
}

}  // namespace

void fuzzFailure(const QString& target, const QString& what)
{
    QTextStream(stderr) << "vdfuzz: " << target << ": " << what << '\n';
    std::abort();
}

// Qt keeps some of its own allocations to the end of the process on purpose; ASAN_OPTIONS may
// still ask for leaks.
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt reads none of libFuzzer's flags. The application, like everything the targets build,
    // lives until the process ends: libFuzzer leaves by exit(), and nothing of Qt can be torn
    // down once the exit handlers have started on its own globals.
    static int qtArgc = 1;
    static const QApplication* const application = new QApplication(qtArgc, *argv);
    Q_UNUSED(application)
    // Every malformed input would log its refusal; QT_LOGGING_RULES still turns lines on.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false\n*.warning=false"));

    const char* option = *argc > 1 ? (*argv)[1] : "";
    if (std::strcmp(option, "--list") == 0) {
        printTargets(stdout);
        std::exit(0);
    }
    if (std::strcmp(option, "--write-seeds") == 0) {
        if (*argc != 3) {
            std::fputs("usage: vdfuzz --write-seeds DIR\n", stderr);
            std::exit(2);
        }
        std::exit(writeSeeds(QString::fromLocal8Bit((*argv)[2])));
    }

    static const QList<FuzzTarget> targets = allTargets();
    const QString name = qEnvironmentVariable("VD_FUZZ_TARGET");
    for (const FuzzTarget& target : targets) {
        if (target.name == name)
            selected = &target;
    }
    if (!selected) {
        QTextStream(stderr) << "vdfuzz: VD_FUZZ_TARGET names no target" << (name.isEmpty() ? "" : ": ") << name
                            << "; the targets are:\n";
        printTargets(stderr);
        std::exit(2);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A copy: the targets may keep the bytes beyond this call, as the exchange would.
    selected->run(QByteArray(reinterpret_cast<const char*>(data), int(size)));
    return 0;
}
