#pragma once

#include <QLoggingCategory>

// The plug-in's one logging category, "gui.plugin.requestview".
const QLoggingCategory& rvc();
