#pragma once

#include "vdplatform_export.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QVector>
#include <QTableView>

class QMenu;
class QTimer;

// The console's table: a header menu that shows and hides columns, columns that start hidden
// until the operator shows them, and a header state that the owner keeps between runs. Until
// there is such a state, or the operator sizes a column, each shown column is as wide as its
// title and its first rows need.
//
// Rows are one line high. The table measures that height once instead of once per row, and its
// row header measures each label length once, so that a hundred thousand rows sized to their
// contents still show at once.
class VDPLATFORM_EXPORT VDTableView : public QTableView
{
    Q_OBJECT
public:
    explicit VDTableView(QWidget* parent = nullptr);
    ~VDTableView() override;

    // Columns offered in the header's context menu, in menu order.
    void setHeaderMenuColumns(const QList<int>& columns);
    QList<int> headerMenuColumns() const;
    // Columns hidden until a saved state or the operator shows them.
    void setHeaderHiddenByDefaultColumns(const QList<int>& columns);
    QList<int> headerHiddenByDefaultColumns() const;
    // Restores what headerStateChanged gave; empty or broken bytes keep the defaults.
    void restoreHeaderState(const QByteArray& state);
    QByteArray headerState() const;

    // The header's context menu: one checkable action per menu column, its data the column.
    QMenu* headerMenu() const;

    // How many rows the table would show without the operator's search and filters, as the
    // owner counts them; -1 (the default) when it doesn't say, and then the model's rows count.
    void setTotalRowCount(int total);
    int totalRowCount() const;
    int shownRowCount() const;

    // A line shown in the middle of the table while it has no rows: why it is empty.
    void setPlaceholderText(const QString& text);
    QString placeholderText() const { return m_placeholder; }

    void setModel(QAbstractItemModel* model) override;
    // Type-ahead only where the model offers it (ObjectTreeProxy::isSearchEnabled).
    void keyboardSearch(const QString& search) override;
    int sizeHintForRow(int row) const override;

signals:
    // The operator moved, resized, sorted, showed or hid a column.
    void headerStateChanged(const QByteArray& state);
    // The rows shown, or the total they are part of, changed.
    void rowCountsChanged(int shown, int total);

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void applyHiddenByDefault();
    void fallBackToDefaults();
    void updateHeaderMenu();
    void showHeaderMenu(const QPoint& pos);
    void noteHeaderChange();
    void showColumnByHand(int column, bool shown);
    void noteSectionResized(int section);
    void fitColumnsLater();
    void fitColumns();
    void publishHeaderState();
    void noteRowCounts();

    QList<int> m_menuColumns;
    QList<int> m_hiddenByDefault;
    QMenu* m_headerMenu = nullptr;
    QTimer* m_stateDelay = nullptr;
    QByteArray m_publishedState;
    bool m_quiet = false;     // the header changes by our own hand, not the operator's
    bool m_restored = false;  // the header shows a restored state rather than the defaults
    bool m_fitting = false;   // the columns follow their contents: nobody has laid them out
    bool m_fitDue = false;    // and they are to be measured again once shown
    bool m_fittedRows = false;  // the last measure saw rows, not only the titles
    int measureRowHeight(int row) const;
    void adoptRowHeight();

    mutable int m_rowHeight = -1;
    QString m_placeholder;
    int m_total = -1;
    QPair<int, int> m_announcedCounts{-1, -1};
    QVector<QMetaObject::Connection> m_modelConnections;
};
