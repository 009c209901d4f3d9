#include "pagelistwizard.h"

#include "vdwizardpage.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QMessageBox>

PageListWizard::PageListWizard(QWidget* parent) : QWizard(parent), m_pageList(new QListWidget(this))
{
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage, true);
    // The console runs without Qt's own translations: the buttons are named here.
    setButtonText(QWizard::BackButton, tr("< Назад"));
    setButtonText(QWizard::NextButton, tr("Далее >"));
    setButtonText(QWizard::CommitButton, tr("Применить"));
    setButtonText(QWizard::FinishButton, tr("Готово"));
    setButtonText(QWizard::CancelButton, tr("Отмена"));
    setButtonText(QWizard::HelpButton, tr("Справка"));
    m_pageList->setObjectName(QStringLiteral("pageList"));
    m_pageList->setFocusPolicy(Qt::NoFocus);
    m_pageList->setSelectionMode(QAbstractItemView::NoSelection);
    m_pageList->setFrameShape(QFrame::NoFrame);
    m_pageList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_pageList->setWordWrap(true);
    m_pageList->setTextElideMode(Qt::ElideNone);
    m_pageList->setSpacing(3);
    m_pageList->setIconSize(QSize(16, 16));
    // The list belongs to the window's frame, not to the page's content.
    m_pageList->viewport()->setBackgroundRole(QPalette::Window);
    m_pageList->setAutoFillBackground(false);
    setSideWidget(m_pageList);
    connect(this, &QWizard::currentIdChanged, this, &PageListWizard::showButtons);
    // Typing goes to the field in focus, not to the wizard: the application tells.
    qApp->installEventFilter(this);
}

PageListWizard::~PageListWizard() = default;

void PageListWizard::showButtons(int id)
{
    fillPageList(id);
}

void PageListWizard::fillPageList(int currentId)
{
    // Pages before the current one are done, those after it still to come.
    m_pageList->clear();
    const QList<int> ids = pageIds();
    const bool reached = ids.contains(currentId);
    for (const int id : ids) {
        QWizardPage* wizardPage = page(id);
        const auto* own = qobject_cast<const VDWizardPage*>(wizardPage);
        auto* item = new QListWidgetItem(own ? own->pageListText() : wizardPage->title(), m_pageList);
        item->setData(Qt::UserRole, id);
        const bool current = id == currentId;
        QFont font = item->font();
        font.setBold(current);
        item->setFont(font);
        item->setIcon(current ? QIcon::fromTheme(QStringLiteral("action-right")) : QIcon());
        if (reached && ids.indexOf(id) > ids.indexOf(currentId))
            item->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
    }
    // As wide as the longest title in bold, within reason; longer ones wrap.
    QFont bold = m_pageList->font();
    bold.setBold(true);
    int widest = 0;
    for (int row = 0; row < m_pageList->count(); ++row)
        widest = qMax(widest, QFontMetrics(bold).horizontalAdvance(m_pageList->item(row)->text()));
    m_pageList->setFixedWidth(qBound(160, widest + m_pageList->iconSize().width() + 24, 260));
}

void PageListWizard::reject()
{
    const bool lastPage = currentPage() && currentPage()->nextId() == -1;
    if (m_touched && !lastPage && isVisible()) {
        const QMessageBox::StandardButton answer = QMessageBox::question(
            this, windowTitle(), tr("Введённые данные не будут сохранены. Закрыть мастер?"),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return;
    }
    QWizard::reject();
}

bool PageListWizard::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_touched && (event->type() == QEvent::KeyPress || event->type() == QEvent::MouseButtonPress)) {
        auto* widget = qobject_cast<QWidget*>(watched);
        const QList<int> ids = pageIds();
        for (const int id : ids) {
            if (widget && page(id)->isAncestorOf(widget)) {
                // Escape is the question itself, not an edit.
                const bool escape = event->type() == QEvent::KeyPress
                    && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
                m_touched = !escape;
                break;
            }
        }
    }
    return QWizard::eventFilter(watched, event);
}

int PageListWizard::markedPage() const
{
    for (int row = 0; row < m_pageList->count(); ++row) {
        if (m_pageList->item(row)->font().bold())
            return m_pageList->item(row)->data(Qt::UserRole).toInt();
    }
    return -1;
}
