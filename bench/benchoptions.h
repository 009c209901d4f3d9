#pragma once

#include "tableundertest.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

// What to measure, from the command line.
struct BenchOptions
{
    int requests = 100000;
    int repetitions = 5;
    QVector<Side> sides{Side::Ours, Side::Baseline};
    // Set in the child process that measures the memory of one side.
    std::optional<Side> memoryOf;

    // The options of `arguments` (the program's name first); nullopt with `error` set when they
    // are wrong. Prints the help and exits for --help.
    static std::optional<BenchOptions> parse(const QStringList& arguments, QString* error);
};
