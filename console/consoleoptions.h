#pragma once

#include "commandline.h"
#include "keystrokes.h"
#include "serveroptions.h"
#include "storelocation.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What the console was asked to do on its command line.
struct ConsoleOptions
{
    Q_DECLARE_TR_FUNCTIONS(ConsoleOptions)

public:
    // The largest demo set that --requests takes.
    static constexpr int MaxRequests = 1000000;

    // Typing into a widget of the window to shoot, by its object name.
    struct ScreenshotInput
    {
        QString object;
        Keystrokes keys;
    };
    // What is done before the picture is taken.
    struct ScreenshotScript
    {
        QStringList clicks;            // buttons of the tab clicked first, by object name
        int rows = 1;                  // rows of the tab's table selected then
        QString action;                // object name of an action of the tab to trigger
        std::optional<int> page;       // page of the wizard, or tab of the dialog, it opens
        QList<ScreenshotInput> inputs;  // in order, each on the page where its widget shows
        bool mainWindow = false;       // shoot the main window after all, not what opened
    };

    QString user;                  // empty: the server's default login
    std::optional<int> requests;   // empty: the store as it is, or a small demo set in a new one
    QString screenshotFile;        // empty: run interactively
    ScreenshotScript screenshot;
    QString pluginDir;
    // Where the embedded server keeps its objects; empty: the file in the user's data folder.
    std::optional<vdserver::StoreLocation> database;
    // A standalone server to use instead of the embedded one.
    std::optional<vdserver::Endpoint> server;

    using Parsed = vdserver::ParsedCommandLine<ConsoleOptions>;
    // Reads the arguments, the program's name first. Needs the application object for the
    // help text and the default plug-in folder (next to the binary).
    static Parsed parse(const QStringList& arguments);
};
