#include "mainwindow.h"

#include "localstorage.h"
#include "ui_mainwindow.h"
#include "vdstyle.h"

#include <QIcon>
#include <QLabel>

using vorandel::LocalStorage;

MainWindow::MainWindow(const QString& userName, QWidget* parent)
    : QMainWindow(parent), ui(std::make_unique<Ui_MainWindow>())
{
    ui->setupUi(this);
    setWindowTitle(tr("Консоль оператора — %1").arg(userName));
    ui->pages->setCurrentWidget(ui->tabs);

    m_problemsLabel = new QLabel(this);
    QPalette warning = m_problemsLabel->palette();
    warning.setColor(QPalette::WindowText, vdstyle::vdOrange);
    m_problemsLabel->setPalette(warning);
    m_userLabel = new QLabel(tr("Пользователь: %1").arg(userName), this);
    m_objectsLabel = new QLabel(this);
    statusBar()->addWidget(m_problemsLabel, 1);
    statusBar()->addPermanentWidget(m_userLabel);
    statusBar()->addPermanentWidget(m_objectsLabel);
    countObjects();

    const LocalStorage* store = LocalStorage::instance();
    connect(store, &LocalStorage::dataChanged, this, &MainWindow::storeChanged);
    connect(store, &LocalStorage::dataRemoved, this, &MainWindow::storeChanged);
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

void MainWindow::storeChanged(const QString& dataname)
{
    m_datanames.insert(dataname);
    countObjects();
}

void MainWindow::countObjects()
{
    const LocalStorage* store = LocalStorage::instance();
    int count = 0;
    for (const QString& name : qAsConst(m_datanames)) {
        if (const vorandel::OBJECT_HASH* objects = store->constObjects(name))
            count += objects->size();
    }
    m_objectsLabel->setText(tr("Объектов: %1").arg(count));
}
