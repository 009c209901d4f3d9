#pragma once

#include "vddatastream.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

// One decoder under the fuzzer: what it does with an input, and the valid inputs it starts from.
struct FuzzTarget
{
    QString name;
    std::function<void(const QByteArray& input)> run;
    // Payloads written by the project's own encoders; the fuzzer mutates them.
    std::function<QList<QByteArray>()> seeds;
};

// The targets of each side of the exchange.
QList<FuzzTarget> recordTargets();
QList<FuzzTarget> tabTargets();
QList<FuzzTarget> serverTargets();
// A networked console's reading of what its server pushes.
QList<FuzzTarget> consoleTargets();

// Stops the run the way a sanitizer would, so that libFuzzer keeps the input: for a property
// that doesn't hold rather than for memory gone wrong.
[[noreturn]] void fuzzFailure(const QString& target, const QString& what);

// Writes values the way the exchange writes a payload.
template <typename... Values>
QByteArray payload(const Values&... values)
{
    QByteArray bytes;
    VDDataStream out(&bytes, QIODevice::WriteOnly);
    (out << ... << values);
    return bytes;
}
