#pragma once

#include <QMainWindow>

#include <memory>

class QLabel;
class QTabWidget;
class Ui_MainWindow;

// The console's window: one tab per plug-in page, or a page that says why there is none, and a
// status bar with the operator and how many rows the table of the current page shows of all it
// may show. Ctrl+Q closes it. While the server can't be reached a banner says so over the tabs,
// whose tool bars are disabled; the tables stay as they are. It may keep its size and place for
// the next start.
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
    // Without a server: the banner with `text`, the tool bars of the pages disabled. An empty
    // text brings the window back to work.
    void setOffline(const QString& text);
    bool isOffline() const;

    // Takes the size and place of the last window from the settings, and keeps them at close.
    void rememberGeometry();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // Follows the table of the page in front, once the page is built.
    void followCurrentTable();
    void showRowCounts(int shown, int total);

    std::unique_ptr<Ui_MainWindow> ui;
    QLabel* m_userLabel = nullptr;
    QLabel* m_rowsLabel = nullptr;
    QLabel* m_problemsLabel = nullptr;
    QMetaObject::Connection m_tableConnection;
    bool m_remembersGeometry = false;
};
