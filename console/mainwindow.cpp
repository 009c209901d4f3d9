#include "mainwindow.h"

#include "settings.h"
#include "ui_mainwindow.h"
#include "vdstackedtoolbars.h"
#include "vdstyle.h"
#include "vdtableview.h"

#include <QCloseEvent>
#include <QIcon>
#include <QLabel>
#include <QLocale>
#include <QShortcut>
#include <QTimer>

namespace {
// Where the window keeps its size and place, and the layout of its docks and tool bars.
const QString GeometryKey = QStringLiteral("console/geometry");
const QString StateKey = QStringLiteral("console/window_state");
}  // namespace

MainWindow::MainWindow(const QString& userName, QWidget* parent)
    : QMainWindow(parent), ui(std::make_unique<Ui_MainWindow>())
{
    ui->setupUi(this);
    setWindowTitle(tr("Консоль оператора — %1").arg(userName));
    ui->pages->setCurrentWidget(ui->tabs);
    QPalette banner = ui->offlineBanner->palette();
    banner.setColor(QPalette::Window, vdstyle::vdOrange);
    banner.setColor(QPalette::WindowText, Qt::white);
    ui->offlineBanner->setPalette(banner);

    m_problemsLabel = new QLabel(this);
    QPalette warning = m_problemsLabel->palette();
    warning.setColor(QPalette::WindowText, vdstyle::vdOrange);
    m_problemsLabel->setPalette(warning);
    m_userLabel = new QLabel(tr("Пользователь: %1").arg(userName), this);
    m_rowsLabel = new QLabel(this);
    m_rowsLabel->setObjectName(QStringLiteral("rowsLabel"));
    statusBar()->addWidget(m_problemsLabel, 1);
    statusBar()->addPermanentWidget(m_userLabel);
    statusBar()->addPermanentWidget(m_rowsLabel);
    m_rowsLabel->hide();

    // A page is inserted before it is built: its table is looked for once the building is over.
    connect(ui->tabs, &QTabWidget::currentChanged, this,
            [this] { QTimer::singleShot(0, this, &MainWindow::followCurrentTable); });

    auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this);
    quit->setContext(Qt::ApplicationShortcut);
    connect(quit, &QShortcut::activated, this, &QWidget::close);
}

MainWindow::~MainWindow() = default;

QTabWidget* MainWindow::tabs() const
{
    return ui->tabs;
}

void MainWindow::showMessage(const QString& title, const QStringList& details)
{
    const int size = 4 * fontMetrics().height();
    ui->messageIcon->setPixmap(QIcon::fromTheme(QStringLiteral("common-warning")).pixmap(size, size));
    QFont titleFont = font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.5);
    ui->messageTitle->setFont(titleFont);
    ui->messageTitle->setText(title);
    ui->messageDetails->setText(details.join(QLatin1Char('\n')));
    ui->pages->setCurrentWidget(ui->messagePage);
}

void MainWindow::showProblems(const QStringList& problems)
{
    if (problems.isEmpty()) {
        m_problemsLabel->clear();
        m_problemsLabel->setToolTip({});
        return;
    }
    QString text = problems.constFirst();
    if (problems.size() > 1)
        text += tr(" (всего замечаний: %1)").arg(problems.size());
    m_problemsLabel->setText(text);
    m_problemsLabel->setToolTip(problems.join(QLatin1Char('\n')));
}

void MainWindow::setOffline(const QString& text)
{
    ui->offlineBanner->setText(text);
    ui->offlineBanner->setVisible(!text.isEmpty());
    // What a page does goes to the server; what it shows stays readable.
    const QList<VDStackedToolBars*> toolBars = ui->tabs->findChildren<VDStackedToolBars*>();
    for (VDStackedToolBars* toolBar : toolBars)
        toolBar->setEnabled(text.isEmpty());
}

bool MainWindow::isOffline() const
{
    return !ui->offlineBanner->isHidden();
}

void MainWindow::rememberGeometry()
{
    m_remembersGeometry = true;
    Settings* settings = Settings::instance();
    restoreGeometry(settings->value(GeometryKey).toByteArray());
    restoreState(settings->value(StateKey).toByteArray());
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_remembersGeometry) {
        Settings* settings = Settings::instance();
        settings->setValue(GeometryKey, saveGeometry());
        settings->setValue(StateKey, saveState());
        settings->sync();
    }
    QMainWindow::closeEvent(event);
}

void MainWindow::followCurrentTable()
{
    disconnect(m_tableConnection);
    QWidget* page = ui->tabs->currentWidget();
    auto* table = page ? page->findChild<VDTableView*>() : nullptr;
    m_rowsLabel->setVisible(table);
    if (!table)
        return;
    m_tableConnection = connect(table, &VDTableView::rowCountsChanged, this, &MainWindow::showRowCounts);
    showRowCounts(table->shownRowCount(), table->totalRowCount());
}

void MainWindow::showRowCounts(int shown, int total)
{
    const QString page = ui->tabs->tabText(ui->tabs->currentIndex()).remove(QLatin1Char('&'));
    // Counts of six digits read better grouped, as the operator's language groups them.
    const QLocale locale;
    m_rowsLabel->setText(shown == total
                             ? tr("%1: %2").arg(page, locale.toString(total))
                             : tr("%1: показано %2 из %3").arg(page, locale.toString(shown), locale.toString(total)));
}
