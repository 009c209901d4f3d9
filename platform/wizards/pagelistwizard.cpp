#include "pagelistwizard.h"

#include "vdwizardpage.h"

#include <QListWidget>

PageListWizard::PageListWizard(QWidget* parent) : QWizard(parent), m_pageList(new QListWidget(this))
{
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage, true);
    m_pageList->setObjectName(QStringLiteral("pageList"));
    m_pageList->setFocusPolicy(Qt::NoFocus);
    m_pageList->setSelectionMode(QAbstractItemView::NoSelection);
    m_pageList->setFrameShape(QFrame::NoFrame);
    m_pageList->setMinimumWidth(180);
    m_pageList->setMaximumWidth(240);
    setSideWidget(m_pageList);
    connect(this, &QWizard::currentIdChanged, this, &PageListWizard::showButtons);
}

PageListWizard::~PageListWizard() = default;

void PageListWizard::showButtons(int id)
{
    fillPageList(id);
}

void PageListWizard::fillPageList(int currentId)
{
    m_pageList->clear();
    const QList<int> ids = pageIds();
    for (const int id : ids) {
        QWizardPage* wizardPage = page(id);
        const auto* own = qobject_cast<const VDWizardPage*>(wizardPage);
        auto* item = new QListWidgetItem(own ? own->pageListText() : wizardPage->title(), m_pageList);
        item->setData(Qt::UserRole, id);
        QFont font = item->font();
        font.setBold(id == currentId);
        item->setFont(font);
        if (id == currentId)
            item->setIcon(QIcon::fromTheme(QStringLiteral("action-right")));
        else if (id > currentId)
            item->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
    }
}
