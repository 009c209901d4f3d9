#include "promptmenuedit.h"

#include "promptmenueditcontentsfactory.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QScreen>

#include <algorithm>

PromptMenuEdit::PromptMenuEdit(QWidget* parent)
    : ParameterizedEdit(parent), m_factory(std::make_unique<PromptMenuEditContentsFactory>())
{
    // The list is a pop-up of its own that never takes the focus: the operator goes on typing
    // in the field, and the field steers the list.
    m_menu = new QListWidget(this);
    m_menu->setObjectName(QStringLiteral("promptMenu"));
    m_menu->setWindowFlags(Qt::ToolTip);
    m_menu->setFocusPolicy(Qt::NoFocus);
    m_menu->setMouseTracking(true);
    m_menu->setUniformItemSizes(false);
    m_menu->installEventFilter(this);
    connect(m_menu, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { choose(m_menu->row(item)); });
    connect(this, &QLineEdit::textEdited, this, &PromptMenuEdit::search);
}

PromptMenuEdit::~PromptMenuEdit() = default;

void PromptMenuEdit::setSearcher(TrieStatic<unsigned int>* searcher)
{
    m_searcher = searcher;
}

void PromptMenuEdit::setMenuFactory(PromptMenuEditContentsFactory* factory)
{
    m_factory.reset(factory ? factory : new PromptMenuEditContentsFactory);
}

void PromptMenuEdit::setMaximumHits(int count)
{
    m_maximumHits = std::max(1, count);
}

QList<unsigned int> PromptMenuEdit::hits() const
{
    return m_menu->isVisible() ? m_hits : QList<unsigned int>();
}

bool PromptMenuEdit::isMenuVisible() const
{
    return m_menu->isVisible();
}

void PromptMenuEdit::search(const QString& text)
{
    m_hits.clear();
    m_menu->clear();
    const QString key = text.trimmed().toLower();
    if (!m_searcher || key.isEmpty()) {
        hideMenu();
        return;
    }
    QSet<unsigned int> found;
    m_searcher->contains(key, found);
    m_hits = found.values();
    std::sort(m_hits.begin(), m_hits.end());
    if (m_hits.size() > m_maximumHits)
        m_hits.erase(m_hits.begin() + m_maximumHits, m_hits.end());
    if (m_hits.isEmpty()) {
        hideMenu();
        return;
    }
    for (const unsigned int uid : qAsConst(m_hits)) {
        auto* item = new QListWidgetItem(m_menu);
        auto* label = new QLabel(m_factory->text(uid));
        label->setTextFormat(Qt::RichText);
        label->setContentsMargins(4, 2, 4, 2);
        const QPixmap picture = m_factory->pixmap(uid);
        if (!picture.isNull())
            item->setIcon(QIcon(picture));
        item->setSizeHint(label->sizeHint());
        m_menu->setItemWidget(item, label);
    }
    m_menu->setCurrentRow(0);
    int height = m_menu->frameWidth() * 2;
    for (int row = 0; row < m_menu->count() && row < 8; ++row)
        height += m_menu->sizeHintForRow(row);
    const QPoint below = mapToGlobal(QPoint(0, this->height()));
    m_menu->setGeometry(below.x(), below.y(), std::max(width(), 320), height);
    m_menu->show();
}

void PromptMenuEdit::choose(int row)
{
    if (row < 0 || row >= m_hits.size())
        return;
    const unsigned int uid = m_hits.at(row);
    hideMenu();
    emit found(uid);
}

void PromptMenuEdit::hideMenu()
{
    m_menu->hide();
}

bool PromptMenuEdit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_menu && event->type() == QEvent::Hide)
        m_hits.clear();
    return ParameterizedEdit::eventFilter(watched, event);
}

void PromptMenuEdit::keyPressEvent(QKeyEvent* event)
{
    if (m_menu->isVisible()) {
        switch (event->key()) {
        case Qt::Key_Down:
            m_menu->setCurrentRow(std::min(m_menu->currentRow() + 1, m_menu->count() - 1));
            return;
        case Qt::Key_Up:
            m_menu->setCurrentRow(std::max(m_menu->currentRow() - 1, 0));
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            choose(m_menu->currentRow());
            return;
        case Qt::Key_Escape:
            hideMenu();
            return;
        default:
            break;
        }
    }
    ParameterizedEdit::keyPressEvent(event);
}

void PromptMenuEdit::focusOutEvent(QFocusEvent* event)
{
    hideMenu();
    ParameterizedEdit::focusOutEvent(event);
}
