#pragma once

#include <QMainWindow>

#include <memory>

class QLabel;
class QTabWidget;
class Ui_MainWindow;

// The console's window: one tab per plug-in page, or a page that says why there is none, and a
// status bar with the operator and how many rows the table of the current page shows of all it
// may show. Ctrl+Q closes it.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(const QString& userName, QWidget* parent = nullptr);
    ~MainWindow() override;

    QTabWidget* tabs() const;
    // Shows a page with this title and these lines in place of the tabs.
    void showMessage(const QString& title, const QStringList& details);
    // Tells the operator, in the status bar, what went wrong while the tabs were built.
    void showProblems(const QStringList& problems);

private:
    // Follows the table of the page in front, once the page is built.
    void followCurrentTable();
    void showRowCounts(int shown, int total);

    std::unique_ptr<Ui_MainWindow> ui;
    QLabel* m_userLabel = nullptr;
    QLabel* m_rowsLabel = nullptr;
    QLabel* m_problemsLabel = nullptr;
    QMetaObject::Connection m_tableConnection;
};
