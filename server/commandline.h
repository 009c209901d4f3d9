#pragma once

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <optional>

namespace vdserver {

// What a program's command line came to: the options to run with, or a text to print before it
// leaves. The console and the standalone server read theirs alike.
template <typename Options>
struct ParsedCommandLine
{
    enum Outcome {
        Run,      // `options` holds what to do
        Help,     // print `text` to standard output and exit with success
        Version,  // likewise
        Error,    // print `text` to standard error and exit with failure
    };

    Outcome outcome = Error;
    Options options;
    QString text;

    static ParsedCommandLine failure(const QString& text)
    {
        ParsedCommandLine parsed;
        parsed.text = text;
        return parsed;
    }

    // Parses `arguments` (the program's name first) with `parser`, which holds the program's own
    // options besides those of help and version, and settles what every program settles alike: a
    // mistake that the parser finds, --help, --version and an argument that is no option.
    // nullopt leaves the options to the program.
    static std::optional<ParsedCommandLine> settle(QCommandLineParser& parser, const QStringList& arguments)
    {
        if (!parser.parse(arguments))
            return failure(parser.errorText());
        ParsedCommandLine parsed;
        if (parser.isSet(QStringLiteral("help"))) {
            parsed.outcome = Help;
            parsed.text = parser.helpText();
            return parsed;
        }
        if (parser.isSet(QStringLiteral("version"))) {
            parsed.outcome = Version;
            parsed.text = QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                        QCoreApplication::applicationVersion());
            return parsed;
        }
        if (!parser.positionalArguments().isEmpty()) {
            return failure(QCoreApplication::translate("CommandLine", "Unexpected argument '%1'; see --help.")
                               .arg(parser.positionalArguments().constFirst()));
        }
        return std::nullopt;
    }

    // Prints what there is to print, and gives the exit code when the program is to leave now.
    std::optional<int> answer() const
    {
        switch (outcome) {
        case Help:
        case Version:
            QTextStream(stdout) << text;
            return 0;
        case Error:
            QTextStream(stderr) << text << Qt::endl;
            return 2;
        case Run:
            break;
        }
        return std::nullopt;
    }
};

}  // namespace vdserver
