#pragma once

#include <QMainWindow>
#include <QSet>

#include <memory>

class QLabel;
class QTabWidget;
class Ui_MainWindow;

// The console's window: one tab per plug-in page, or a page that says why there is none, and a
// status bar with the operator and the number of objects in the local store.
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
    void storeChanged(const QString& dataname);
    void countObjects();

    std::unique_ptr<Ui_MainWindow> ui;
    QLabel* m_userLabel = nullptr;
    QLabel* m_objectsLabel = nullptr;
    QLabel* m_problemsLabel = nullptr;
    QSet<QString> m_datanames;  // every dataname the store has reported so far
};
