#include "promptmenuedit.h"

#include "promptmenueditcontentsfactory.h"

#include <QAbstractListModel>
#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QCollator>
#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include <algorithm>

namespace {
constexpr int Margin = 4;
constexpr int PictureSide = 40;  // pictures are scaled down to this, never up

// The plain words of a rich text, enough to order the hits by: tags out, the few entities that
// names hold decoded.
QString plainText(const QString& html)
{
    QString plain;
    plain.reserve(html.size());
    bool inTag = false;
    for (const QChar c : html) {
        if (c == QLatin1Char('<'))
            inTag = true;
        else if (c == QLatin1Char('>'))
            inTag = false;
        else if (!inTag)
            plain.append(c);
    }
    plain.replace(QLatin1String("&lt;"), QLatin1String("<")).replace(QLatin1String("&gt;"), QLatin1String(">"));
    plain.replace(QLatin1String("&quot;"), QLatin1String("\"")).replace(QLatin1String("&nbsp;"), QLatin1String(" "));
    return plain.replace(QLatin1String("&amp;"), QLatin1String("&"));
}

void setUpDocument(QTextDocument& document, const QString& html, const QFont& font)
{
    document.setDefaultFont(font);
    document.setDocumentMargin(0);
    document.setHtml(html);
}
}  // namespace

// The hits with what the factory made of them: texts at once, pictures when first asked for.
class PromptMenuEdit::HitModel : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;

    void setHits(const QList<unsigned int>& uids, const PromptMenuEditContentsFactory& factory)
    {
        beginResetModel();
        m_factory = &factory;
        m_rows.clear();
        m_rows.reserve(uids.size());
        for (const unsigned int uid : uids) {
            const QString text = factory.text(uid);
            m_rows.append({uid, text, plainText(text), QPixmap(), false});
        }
        QCollator collator;
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        collator.setNumericMode(true);
        std::stable_sort(m_rows.begin(), m_rows.end(), [&](const Row& a, const Row& b) {
            const int c = collator.compare(a.plain, b.plain);
            return c != 0 ? c < 0 : a.uid < b.uid;
        });
        endResetModel();
    }
    void clear()
    {
        beginResetModel();
        m_rows.clear();
        endResetModel();
    }
    QList<unsigned int> uids() const
    {
        QList<unsigned int> uids;
        for (const Row& row : m_rows)
            uids.append(row.uid);
        return uids;
    }
    unsigned int uidAt(int row) const { return row >= 0 && row < m_rows.size() ? m_rows.at(row).uid : 0; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override { return parent.isValid() ? 0 : m_rows.size(); }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || index.row() >= m_rows.size())
            return {};
        Row& row = m_rows[index.row()];
        switch (role) {
        case Qt::DisplayRole:
            return row.text;
        case Qt::AccessibleTextRole:
        case Qt::ToolTipRole:
            return row.plain;
        case Qt::DecorationRole:
            if (!row.pictureMade) {
                row.pictureMade = true;
                row.picture = m_factory->pixmap(row.uid);
                if (row.picture.height() > PictureSide || row.picture.width() > PictureSide)
                    row.picture = row.picture.scaled(PictureSide, PictureSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            }
            return row.picture;
        case Qt::UserRole:
            return row.uid;
        default:
            return {};
        }
    }

private:
    struct Row
    {
        unsigned int uid;
        QString text;
        QString plain;
        QPixmap picture;
        bool pictureMade;
    };
    mutable QVector<Row> m_rows;  // pictures are made on first sight
    const PromptMenuEditContentsFactory* m_factory = nullptr;
};

// Draws a hit: its picture on the left, its rich text beside it.
class PromptMenuEdit::HitDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem panel = option;
        initStyleOption(&panel, index);
        panel.text.clear();
        panel.icon = QIcon();
        panel.features &= ~QStyleOptionViewItem::HasDecoration;
        const QWidget* widget = option.widget;
        QStyle* style = widget ? widget->style() : QApplication::style();
        style->drawControl(QStyle::CE_ItemViewItem, &panel, painter, widget);

        QRect room = option.rect.adjusted(Margin, Margin, -Margin, -Margin);
        const QPixmap picture = index.data(Qt::DecorationRole).value<QPixmap>();
        if (!picture.isNull()) {
            const QRect place(room.left() + (PictureSide - picture.width()) / 2,
                              room.top() + (room.height() - picture.height()) / 2, picture.width(), picture.height());
            painter->drawPixmap(place, picture);
            room.setLeft(room.left() + PictureSide + 2 * Margin);
        }
        QTextDocument document;
        setUpDocument(document, index.data(Qt::DisplayRole).toString(), option.font);
        document.setTextWidth(room.width());
        QAbstractTextDocumentLayout::PaintContext context;
        const bool selected = option.state & QStyle::State_Selected;
        context.palette = option.palette;
        context.palette.setColor(QPalette::Text, option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
        painter->save();
        painter->translate(room.left(), room.top() + qMax(0, (room.height() - int(document.size().height())) / 2));
        painter->setClipRect(QRect(QPoint(0, 0), room.size()));
        document.documentLayout()->draw(painter, context);
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QTextDocument document;
        setUpDocument(document, index.data(Qt::DisplayRole).toString(), option.font);
        const QSize text = document.size().toSize();
        const bool picture = !index.data(Qt::DecorationRole).value<QPixmap>().isNull();
        const int height = qMax(text.height(), picture ? PictureSide : 0);
        return {text.width() + (picture ? PictureSide + 2 * Margin : 0) + 2 * Margin, height + 2 * Margin};
    }
};

PromptMenuEdit::PromptMenuEdit(QWidget* parent)
    : ParameterizedEdit(parent),
      m_factory(std::make_unique<PromptMenuEditContentsFactory>()),
      m_menu(new QListView(this)),
      m_hits(new HitModel(this))
{
    qRegisterMetaType<vorandel::TYPE_ID>("vorandel::TYPE_ID");
    // A window of its own that is never activated: the keyboard stays with the field.
    m_menu->setObjectName(QStringLiteral("promptMenu"));
    m_menu->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    m_menu->setAttribute(Qt::WA_ShowWithoutActivating);
    m_menu->setFocusPolicy(Qt::NoFocus);
    m_menu->setFocusProxy(this);
    m_menu->setMouseTracking(true);
    m_menu->setUniformItemSizes(true);  // entries of one factory are alike; only those in view are measured
    m_menu->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_menu->setSelectionMode(QAbstractItemView::SingleSelection);
    m_menu->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_menu->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_menu->setFrameShape(QFrame::Box);
    m_menu->setModel(m_hits);
    m_menu->setItemDelegate(new HitDelegate(m_menu));
    connect(m_menu, &QListView::entered, m_menu, [this](const QModelIndex& index) { m_menu->setCurrentIndex(index); });
    connect(m_menu, &QListView::clicked, this, &PromptMenuEdit::choose);
    connect(this, &QLineEdit::textEdited, this, &PromptMenuEdit::search);
}

PromptMenuEdit::~PromptMenuEdit() = default;

void PromptMenuEdit::setSearcher(TrieStatic<unsigned int>* searcher)
{
    m_searcher = searcher;
}

void PromptMenuEdit::setMenuFactory(PromptMenuEditContentsFactory* factory)
{
    hideMenu();
    m_factory.reset(factory ? factory : new PromptMenuEditContentsFactory);
}

void PromptMenuEdit::setMaximumHits(int count)
{
    m_maximumHits = std::max(1, count);
}

void PromptMenuEdit::setVisibleHits(int count)
{
    m_visibleHits = std::max(1, count);
}

QList<unsigned int> PromptMenuEdit::hits() const
{
    return m_menu->isVisible() ? m_hits->uids() : QList<unsigned int>();
}

bool PromptMenuEdit::isMenuVisible() const
{
    return m_menu->isVisible();
}

unsigned int PromptMenuEdit::currentHit() const
{
    return m_menu->isVisible() ? m_hits->uidAt(m_menu->currentIndex().row()) : 0;
}

void PromptMenuEdit::search(const QString& text)
{
    const QString key = text.trimmed().toLower();
    QSet<unsigned int> found;
    if (m_searcher && !key.isEmpty())
        m_searcher->contains(key, found);
    if (found.isEmpty()) {
        hideMenu();
        return;
    }
    QList<unsigned int> uids = found.values();
    if (uids.size() > m_maximumHits) {
        std::sort(uids.begin(), uids.end());
        uids.erase(uids.begin() + m_maximumHits, uids.end());
    }
    m_hits->setHits(uids, *m_factory);
    showMenu();
}

void PromptMenuEdit::showMenu()
{
    m_menu->setCurrentIndex(m_hits->index(0));
    m_menu->scrollToTop();
    // Under the field, as wide as it or as the entries need; above it where the screen ends.
    // Measured on the entries seen first: measuring them all would draw every picture.
    const int rows = std::min(m_hits->rowCount(), m_visibleHits);
    QStyleOptionViewItem option;
    option.initFrom(m_menu);
    option.font = m_menu->font();
    QSize entry;
    for (int row = 0; row < rows; ++row)
        entry = entry.expandedTo(m_menu->itemDelegate()->sizeHint(option, m_hits->index(row)));
    const int scrollBar = m_hits->rowCount() > rows ? m_menu->verticalScrollBar()->sizeHint().width() : 0;
    const int width = std::max(this->width(), std::min(entry.width(), 640) + scrollBar + 2 * m_menu->frameWidth());
    const int height = rows * m_menu->sizeHintForRow(0) + 2 * m_menu->frameWidth();
    QPoint at = mapToGlobal(QPoint(0, this->height()));
    if (const QScreen* screen = this->screen()) {
        const QRect available = screen->availableGeometry();
        if (at.y() + height > available.bottom())
            at.setY(mapToGlobal(QPoint(0, 0)).y() - height);
        at.setX(std::max(available.left(), std::min(at.x(), available.right() - width)));
    }
    m_menu->setGeometry(QRect(at, QSize(width, height)));
    if (!m_menu->isVisible()) {
        m_menu->show();
        window()->installEventFilter(this);
    }
}

void PromptMenuEdit::hideMenu()
{
    if (!m_menu->isVisible())
        return;
    window()->removeEventFilter(this);
    m_menu->hide();
    m_hits->clear();
}

void PromptMenuEdit::choose(const QModelIndex& index)
{
    const unsigned int uid = m_hits->uidAt(index.row());
    if (uid == 0)
        return;
    hideMenu();
    emit found(uid);
}

void PromptMenuEdit::moveBy(int rows)
{
    const int count = m_hits->rowCount();
    const int row = std::max(0, std::min(count - 1, m_menu->currentIndex().row() + rows));
    m_menu->setCurrentIndex(m_hits->index(row));
    m_menu->scrollTo(m_menu->currentIndex());
}

bool PromptMenuEdit::eventFilter(QObject* watched, QEvent* event)
{
    // The list stays where it was put: when the window moves, hides or loses the keyboard, it goes.
    if (watched == window()) {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Hide:
        case QEvent::WindowDeactivate:
            hideMenu();
            break;
        default:
            break;
        }
    }
    return ParameterizedEdit::eventFilter(watched, event);
}

void PromptMenuEdit::keyPressEvent(QKeyEvent* event)
{
    if (m_menu->isVisible()) {
        switch (event->key()) {
        case Qt::Key_Down:
            return moveBy(1);
        case Qt::Key_Up:
            return moveBy(-1);
        case Qt::Key_PageDown:
            return moveBy(m_visibleHits - 1);
        case Qt::Key_PageUp:
            return moveBy(1 - m_visibleHits);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return choose(m_menu->currentIndex());
        case Qt::Key_Escape:
            return hideMenu();
        default:
            break;
        }
    }
    ParameterizedEdit::keyPressEvent(event);
}

void PromptMenuEdit::focusOutEvent(QFocusEvent* event)
{
    // A click into the list may take the focus for a moment on some desktops; the click chooses.
    if (!m_menu->isVisible() || !m_menu->geometry().contains(QCursor::pos()))
        hideMenu();
    ParameterizedEdit::focusOutEvent(event);
}
