#pragma once

#include <QString>
#include <Qt>

// The two ways of showing the requests that the benchmark compares.
enum class Side {
    Ours,      // the tab itself
    Baseline,  // what a Qt developer would pick first
};

// A table of all requests of the store, shown in a window. Both kinds follow the store's change
// notices by themselves, so the benchmark changes a request through the store, as the server
// does, and only measures how long the table takes to catch up.
class TableUnderTest
{
public:
    virtual ~TableUnderTest() = default;

    // Builds the table over the filled store and shows it; returns once it has been painted.
    virtual void load() = 0;
    // Narrows the rows to the requests that `text` finds; an empty text shows all again.
    virtual void search(const QString& text) = 0;
    virtual void sort(int column, Qt::SortOrder order) = 0;
    // How many rows the table shows now.
    virtual int shownRows() const = 0;
};
