#include "benchoptions.h"

#include <QCommandLineParser>

namespace {

std::optional<Side> sideNamed(const QString& name)
{
    if (name == QLatin1String("ours"))
        return Side::Ours;
    if (name == QLatin1String("baseline"))
        return Side::Baseline;
    return std::nullopt;
}

// A whole number of at least `least`, or nullopt.
std::optional<int> count(const QString& text, int least)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < least)
        return std::nullopt;
    return value;
}

}  // namespace

std::optional<BenchOptions> BenchOptions::parse(const QStringList& arguments, QString* error)
{
    error->clear();
    BenchOptions options;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Measures the request table against a plain item model over the same seeded store.\n"
        "Prints one line per scenario: scenario=NAME n=N ours_ms=X baseline_ms=Y ratio=X/Y."));
    parser.addHelpOption();
    const QCommandLineOption requests(QStringLiteral("n"), QStringLiteral("Number of requests to seed."),
                                      QStringLiteral("N"), QString::number(options.requests));
    const QCommandLineOption repetitions(QStringLiteral("reps"),
                                         QStringLiteral("Repetitions of each scenario (fewer when one is slow)."),
                                         QStringLiteral("R"), QString::number(options.repetitions));
    const QCommandLineOption only(QStringLiteral("only"), QStringLiteral("Measure one side only: ours or baseline."),
                                  QStringLiteral("SIDE"));
    QCommandLineOption memory(QStringLiteral("memory"),
                              QStringLiteral("Internal: print the memory that one side adds, and exit."),
                              QStringLiteral("SIDE"));
    memory.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({requests, repetitions, only, memory});

    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return std::nullopt;
    }
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().constFirst());
        return std::nullopt;
    }

    const std::optional<int> n = count(parser.value(requests), 1);
    if (!n) {
        *error = QStringLiteral("--n wants a number of requests of at least 1, not '%1'.").arg(parser.value(requests));
        return std::nullopt;
    }
    options.requests = *n;
    const std::optional<int> reps = count(parser.value(repetitions), 1);
    if (!reps) {
        *error = QStringLiteral("--reps wants a number of at least 1, not '%1'.").arg(parser.value(repetitions));
        return std::nullopt;
    }
    options.repetitions = *reps;
    // Unset gives nullopt and no error.
    const auto sideOf = [&parser, error](const QCommandLineOption& option) -> std::optional<Side> {
        if (!parser.isSet(option))
            return std::nullopt;
        const std::optional<Side> side = sideNamed(parser.value(option));
        if (!side)
            *error = QStringLiteral("--%1 wants ours or baseline, not '%2'.")
                         .arg(option.names().constFirst(), parser.value(option));
        return side;
    };
    if (const std::optional<Side> side = sideOf(only))
        options.sides = {*side};
    options.memoryOf = sideOf(memory);
    if (!error->isEmpty())
        return std::nullopt;
    return options;
}
