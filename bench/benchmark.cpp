#include "benchmark.h"

#include "baselinetable.h"
#include "benchlogging.h"
#include "constants.h"
#include "eventloop.h"
#include "localstorage.h"
#include "ourtable.h"
#include "processmemory.h"
#include "workload.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QProcess>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <tuple>

using namespace vorandel;

namespace {

// Changes in a burst, each of a single request.
constexpr int BurstSize = 1000;
// The text of the search scenario: the start of many names.
const QString SearchText = QStringLiteral("ив");
// Columns of the sort scenario: the date the validity begins, then the full name.
constexpr int StartColumn = 8;
constexpr int NameColumn = 5;

// What a scenario may take on one side, repetitions together, so that a whole run at
// N = 100,000 stays within three minutes even where the baseline is slow.
constexpr double LoadBudgetMs = 25000;
constexpr double ChangeBudgetMs = 5000;
constexpr double BurstBudgetMs = 30000;
constexpr double SearchBudgetMs = 8000;
constexpr double SortBudgetMs = 8000;
// How long the child that measures memory may take.
constexpr int MemoryChildTimeoutMs = 120000;
const QByteArray MemoryLinePrefix = "memory_kb=";

double median(QVector<double> values)
{
    if (values.isEmpty())
        return std::numeric_limits<double>::quiet_NaN();
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

double millisecondsOf(const std::function<void()>& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return double(clock.nsecsElapsed()) / 1e6;
}

// Lets the event loop settle before a measurement starts, objects deleted later included.
void settle()
{
    drainEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString figure(double value, int decimals)
{
    return std::isnan(value) ? QStringLiteral("-") : QString::number(value, 'f', decimals);
}

}  // namespace

Benchmark::Benchmark(const BenchOptions& options) : m_options(options) {}

int Benchmark::run()
{
    QStringList sides;
    for (const Side side : m_options.sides)
        sides << nameOf(side);
    print(QStringLiteral("# requestbench n=%1 reps=%2 sides=%3")
              .arg(m_options.requests)
              .arg(m_options.repetitions)
              .arg(sides.join(QLatin1Char(','))));

    Figures ours;
    Figures baseline;
    {
        const Workload workload(m_options.requests);
        print(QStringLiteral("# seeded %1 requests, %2 workers, %3 users, %4 access groups in %5 ms; "
                             "store filled in %6 ms")
                  .arg(workload.count(PASS_REQUEST_DATANAME))
                  .arg(workload.count(SUBJECT_DATANAME))
                  .arg(workload.count(USER_DATANAME))
                  .arg(workload.count(POLICY_DATANAME))
                  .arg(workload.seedingMs())
                  .arg(workload.publishingMs()));
        for (const Side side : m_options.sides)
            (side == Side::Ours ? ours : baseline) = measure(side, workload);
    }
    // Each in a process of its own: the peak of a process is all that the kernel tells.
    for (const Side side : m_options.sides)
        (side == Side::Ours ? ours : baseline).memory = memoryOf(side);

    for (const QString& note : qAsConst(m_notes))
        print(note);
    print(QStringLiteral("# rows shown after loading: ours %1, baseline %2; after the search: ours %3, baseline %4")
              .arg(figure(ours.loadedRows, 0), figure(baseline.loadedRows, 0), figure(ours.foundRows, 0),
                   figure(baseline.foundRows, 0)));
    printLine(QStringLiteral("load"), ours.load, baseline.load, QStringLiteral("ms"));
    printLine(QStringLiteral("change1"), ours.change, baseline.change, QStringLiteral("ms"));
    printLine(QStringLiteral("burst"), ours.burst, baseline.burst, QStringLiteral("ms"));
    print(QStringLiteral("# search \"%1\" and back: ours %2 and %3 ms, baseline %4 and %5 ms")
              .arg(SearchText, figure(ours.search, 1), figure(ours.searchBack, 1), figure(baseline.search, 1),
                   figure(baseline.searchBack, 1)));
    printLine(QStringLiteral("search"), std::max(ours.search, ours.searchBack),
              std::max(baseline.search, baseline.searchBack), QStringLiteral("ms"));
    print(QStringLiteral("# sort by column %1, then %2: ours %3 and %4 ms, baseline %5 and %6 ms")
              .arg(StartColumn)
              .arg(NameColumn)
              .arg(figure(ours.sortByStart, 1), figure(ours.sortByName, 1), figure(baseline.sortByStart, 1),
                   figure(baseline.sortByName, 1)));
    printLine(QStringLiteral("sort"), std::max(ours.sortByStart, ours.sortByName),
              std::max(baseline.sortByStart, baseline.sortByName), QStringLiteral("ms"));
    printLine(QStringLiteral("memory"), ours.memory, baseline.memory, QStringLiteral("mb"));
    return 0;
}

Benchmark::Figures Benchmark::measure(Side side, const Workload& workload)
{
    LocalStorage* store = LocalStorage::instance();
    Figures figures;

    std::unique_ptr<TableUnderTest> table;
    figures.load = median(sample(side, QStringLiteral("load"), LoadBudgetMs, [&] {
        table.reset();
        settle();
        table = makeTable(side);
        return millisecondsOf([&] { table->load(); });
    }));
    figures.loadedRows = table->shownRows();

    // Both sides change the same requests in the same order.
    int next = 0;
    figures.change = median(sample(side, QStringLiteral("change1"), ChangeBudgetMs, [&] {
        const QList<ObjectInfo> change{workload.changedRequest(next++)};
        settle();
        return millisecondsOf([&] {
            store->setObjects(PASS_REQUEST_DATANAME, change);
            drainEvents();
        });
    }));

    figures.burst = median(sample(side, QStringLiteral("burst"), BurstBudgetMs, [&] {
        QVector<QList<ObjectInfo>> changes;
        changes.reserve(BurstSize);
        for (int i = 0; i < BurstSize; ++i)
            changes.append({workload.changedRequest(next++)});
        settle();
        return millisecondsOf([&] {
            for (const QList<ObjectInfo>& change : qAsConst(changes))
                store->setObjects(PASS_REQUEST_DATANAME, change);
            drainEvents();
        });
    }));

    std::tie(figures.search, figures.searchBack) = sampleSteps(
        side, QStringLiteral("search"), SearchBudgetMs, [&] { table->search(SearchText); },
        [&] {
            figures.foundRows = table->shownRows();  // costs nothing on either side
            table->search({});
        });
    std::tie(figures.sortByStart, figures.sortByName) = sampleSteps(
        side, QStringLiteral("sort"), SortBudgetMs, [&] { table->sort(StartColumn, Qt::AscendingOrder); },
        [&] { table->sort(NameColumn, Qt::AscendingOrder); });
    return figures;
}

std::pair<double, double> Benchmark::sampleSteps(Side side, const QString& scenario, double budgetMs,
                                                 const std::function<void()>& first,
                                                 const std::function<void()>& second)
{
    QVector<double> firsts;
    QVector<double> seconds;
    sample(side, scenario, budgetMs, [&] {
        settle();
        firsts.append(millisecondsOf([&] {
            first();
            drainEvents();
        }));
        seconds.append(millisecondsOf([&] {
            second();
            drainEvents();
        }));
        return firsts.last() + seconds.last();
    });
    return {median(firsts), median(seconds)};
}

QVector<double> Benchmark::sample(Side side, const QString& scenario, double budgetMs,
                                  const std::function<double()>& once)
{
    const int repetitions = m_options.repetitions;
    QVector<double> samples;
    QElapsedTimer clock;
    clock.start();
    do {
        samples.append(once());
    } while (samples.size() < repetitions
             && double(clock.elapsed()) * (samples.size() + 1) / samples.size() <= budgetMs);
    if (samples.size() < repetitions) {
        m_notes.append(QStringLiteral("# %1 %2: %3 of %4 repetitions, to keep the run within three minutes")
                           .arg(nameOf(side), scenario)
                           .arg(samples.size())
                           .arg(repetitions));
    }
    return samples;
}

double Benchmark::memoryOf(Side side) const
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--memory"), nameOf(side), QStringLiteral("--n"), QString::number(m_options.requests)});
    if (!child.waitForFinished(MemoryChildTimeoutMs) || child.exitStatus() != QProcess::NormalExit
        || child.exitCode() != 0) {
        qCWarning(lcBench) << "fail: the memory of" << nameOf(side) << "could not be measured:" << child.errorString()
                           << "exit code" << child.exitCode();
        child.kill();
        child.waitForFinished();
        return None;
    }
    const QList<QByteArray> lines = child.readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines) {
        if (!line.startsWith(MemoryLinePrefix))
            continue;
        bool ok = false;
        const qint64 kb = line.mid(MemoryLinePrefix.size()).trimmed().toLongLong(&ok);
        if (ok)
            return double(kb) / 1024;
    }
    qCWarning(lcBench) << "fail: the child that measured" << nameOf(side) << "printed no figure";
    return None;
}

int Benchmark::printMemory(Side side) const
{
    const Workload workload(m_options.requests);
    // What the filling left free goes back first, so that the table can't hide in it.
    ProcessMemory::releaseFreeHeap();
    const qint64 before = ProcessMemory::residentKb();
    if (!ProcessMemory::resetPeak())
        qCWarning(lcBench) << "fail: the peak can't be reset; it may include the filling of the store";
    const std::unique_ptr<TableUnderTest> table = makeTable(side);
    table->load();
    const qint64 peak = ProcessMemory::peakKb();
    if (before < 0 || peak < 0) {
        qCWarning(lcBench) << "fail: /proc/self/status tells no memory figures";
        return 1;
    }
    print(QString::fromLatin1(MemoryLinePrefix) + QString::number(peak - before));
    return 0;
}

void Benchmark::printLine(const QString& scenario, double ours, double baseline, const QString& unit) const
{
    const double ratio = ours / baseline;
    print(QStringLiteral("scenario=%1 n=%2 ours_%3=%4 baseline_%3=%5 ratio=%6")
              .arg(scenario)
              .arg(m_options.requests)
              .arg(unit, figure(ours, 1), figure(baseline, 1), figure(ratio, 2)));
}

void Benchmark::print(const QString& line)
{
    QTextStream out(stdout);
    out << line << '\n';
    out.flush();
}

std::unique_ptr<TableUnderTest> Benchmark::makeTable(Side side)
{
    if (side == Side::Ours)
        return std::make_unique<OurTable>();
    return std::make_unique<BaselineTable>();
}

QString Benchmark::nameOf(Side side)
{
    return side == Side::Ours ? QStringLiteral("ours") : QStringLiteral("baseline");
}
