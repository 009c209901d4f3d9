#pragma once

#include "benchoptions.h"
#include "tableundertest.h"

#include <QStringList>
#include <QVector>

#include <functional>
#include <limits>
#include <memory>
#include <utility>

class Workload;

// Measures the tab and the baseline over the same seeded store, scenario by scenario, and prints
// one line per scenario with the medians of both and their ratio.
class Benchmark
{
public:
    explicit Benchmark(const BenchOptions& options);

    // The whole run; returns the program's exit code.
    int run();
    // The child's part of the memory scenario: fills the store, builds the table of one side and
    // prints the memory that it added. Returns the program's exit code.
    int printMemory(Side side) const;

private:
    static constexpr double None = std::numeric_limits<double>::quiet_NaN();

    // Medians in milliseconds, memory in megabytes; None where not measured.
    struct Figures
    {
        double load = None;
        double change = None;
        double burst = None;
        double search = None;
        double searchBack = None;
        double sortByStart = None;
        double sortByName = None;
        double memory = None;
        double loadedRows = None;  // rows shown after loading
        double foundRows = None;   // rows shown after the search
    };

    Figures measure(Side side, const Workload& workload);
    // Runs `once`, which measures one sample, as many times as the options ask while the samples
    // so far say that the next one would still end within `budgetMs`; always at least once.
    QVector<double> sample(Side side, const QString& scenario, double budgetMs, const std::function<double()>& once);
    // A scenario of two steps, each measured with the events that it causes; a sample is the
    // pair. The medians of the first and of the second step.
    std::pair<double, double> sampleSteps(Side side, const QString& scenario, double budgetMs,
                                          const std::function<void()>& first, const std::function<void()>& second);
    double memoryOf(Side side) const;

    void printLine(const QString& scenario, double ours, double baseline, const QString& unit) const;
    static void print(const QString& line);
    static std::unique_ptr<TableUnderTest> makeTable(Side side);
    static QString nameOf(Side side);

    const BenchOptions m_options;
    QStringList m_notes;  // info lines about the run, printed after the measurements
};
