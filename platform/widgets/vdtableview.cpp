#include "vdtableview.h"

#include "objecttreeproxy.h"
#include "platformlogging.h"
#include "vdrowheaderview.h"

#include <QDataStream>
#include <QEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QTimer>

namespace {
// Dragging a column edge sends a resize per pixel; the owner hears of it once the hand rests.
constexpr int StateDelayMsecs = 250;
// Columns are fitted to the rows the operator sees first; a few long texts further down may be
// cut, but measuring a hundred thousand rows would hold up the first start.
constexpr int FittedRows = 100;
// No column takes more than this of the table when fitted.
constexpr int WidestFittedColumn = 360;

// The number of columns a saved header state was made for, -1 for bytes that aren't one.
// QHeaderView::restoreState() fits any state to the model, padding or cutting it, so the number
// is read here from the layout that Qt 5's headers write. Every count is checked against the
// bytes that follow, so that broken bytes can't make Qt reserve gigabytes when it reads them.
int savedSectionCount(const QByteArray& state)
{
    QDataStream in(state);
    // Skips a container of a 32-bit count and elements of a fixed size; gives the count.
    const auto skipArray = [&in](qint64 elementBits) {
        quint32 count = 0;
        in >> count;
        const qint64 bytes = (qint64(count) * elementBits + 7) / 8;
        if (in.device()->bytesAvailable() < bytes)
            in.setStatus(QDataStream::ReadCorruptData);
        else
            in.skipRawData(int(bytes));
        return count;
    };
    int marker = 0, version = -1, length = 0, count = -1;
    in >> marker >> version;
    if (marker != 0xff || version != 0)
        return -1;
    in.skipRawData(3 * 4 + 1);  // orientation, sort order and section, whether the indicator shows
    skipArray(32);              // visual indexes
    skipArray(32);              // logical indexes
    skipArray(1);               // hidden sections
    skipArray(64);              // sizes of the hidden sections
    in >> length >> count;
    in.skipRawData(5 * 1 + 6 * 4);                // flags, resize counts, sizes, alignment, mode
    const quint32 sections = skipArray(3 * 32);  // size, span and resize mode of each
    in.skipRawData(4 + 1 + 4);                   // contents precision, custom default, last size
    return in.status() == QDataStream::Ok && in.atEnd() && qint64(sections) == count ? count : -1;
}
}  // namespace

VDTableView::VDTableView(QWidget* parent)
    : QTableView(parent), m_headerMenu(new QMenu(this)), m_stateDelay(new QTimer(this))
{
    setVerticalHeader(new VDRowHeaderView(this));
    // Rows are one line high: a text that doesn't fit is cut at its end, not wrapped after its
    // first word.
    setWordWrap(false);

    m_stateDelay->setSingleShot(true);
    m_stateDelay->setInterval(StateDelayMsecs);
    connect(m_stateDelay, &QTimer::timeout, this, &VDTableView::publishHeaderState);

    QHeaderView* header = horizontalHeader();
    // The last column takes the room that the others leave, so that the table ends at its edge.
    header->setStretchLastSection(true);
    connect(header, &QHeaderView::sectionMoved, this, &VDTableView::noteHeaderChange);
    connect(header, &QHeaderView::sectionResized, this, &VDTableView::noteSectionResized);
    connect(header, &QHeaderView::sortIndicatorChanged, this, &VDTableView::noteHeaderChange);

    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this, &VDTableView::showHeaderMenu);
    connect(m_headerMenu, &QMenu::aboutToShow, this, &VDTableView::updateHeaderMenu);

    connect(this, &QAbstractItemView::iconSizeChanged, this, [this] { m_rowHeight = -1; });
}

VDTableView::~VDTableView() = default;

void VDTableView::setHeaderMenuColumns(const QList<int>& columns)
{
    m_menuColumns = columns;
    m_headerMenu->clear();
    for (int column : columns) {
        QAction* action = m_headerMenu->addAction(QString());
        action->setCheckable(true);
        action->setData(column);
        connect(action, &QAction::triggered, this, [this, column](bool checked) { showColumnByHand(column, checked); });
    }
    updateHeaderMenu();
}

QList<int> VDTableView::headerMenuColumns() const
{
    return m_menuColumns;
}

void VDTableView::setHeaderHiddenByDefaultColumns(const QList<int>& columns)
{
    m_hiddenByDefault = columns;
    if (!m_restored)
        applyHiddenByDefault();
}

QList<int> VDTableView::headerHiddenByDefaultColumns() const
{
    return m_hiddenByDefault;
}

void VDTableView::restoreHeaderState(const QByteArray& state)
{
    if (state.isEmpty()) {
        fallBackToDefaults();
        return;
    }
    // The real header is only touched by a state that is whole and made for as many columns as
    // the model has; a header of its own over the same model reads it first.
    const int saved = savedSectionCount(state);
    QHeaderView probe(Qt::Horizontal);
    probe.setModel(model());
    if (saved < 0 || !probe.restoreState(state)) {
        qCWarning(lcWidgets) << "header state unreadable; defaults kept";
        fallBackToDefaults();
        return;
    }
    if (saved != horizontalHeader()->count()) {
        qCWarning(lcWidgets).nospace() << "header state for " << saved << " columns refused, the table has "
                                       << horizontalHeader()->count() << "; defaults kept";
        fallBackToDefaults();
        return;
    }

    {
        QScopedValueRollback<bool> quiet(m_quiet, true);
        horizontalHeader()->restoreState(state);
    }
    m_restored = true;
    m_fitting = false;
    m_stateDelay->stop();
    m_publishedState = headerState();
    updateHeaderMenu();
}

QByteArray VDTableView::headerState() const
{
    return horizontalHeader()->saveState();
}

QMenu* VDTableView::headerMenu() const
{
    return m_headerMenu;
}

void VDTableView::setTotalRowCount(int total)
{
    m_total = total;
    noteRowCounts();
}

int VDTableView::totalRowCount() const
{
    return m_total >= 0 ? m_total : shownRowCount();
}

int VDTableView::shownRowCount() const
{
    return model() ? model()->rowCount(rootIndex()) : 0;
}

void VDTableView::noteRowCounts()
{
    const QPair<int, int> counts(shownRowCount(), totalRowCount());
    if (counts == m_announcedCounts)
        return;
    m_announcedCounts = counts;
    emit rowCountsChanged(counts.first, counts.second);
}

void VDTableView::setPlaceholderText(const QString& text)
{
    if (text == m_placeholder)
        return;
    m_placeholder = text;
    viewport()->update();
}

void VDTableView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (m_placeholder.isEmpty() || !model() || model()->rowCount(rootIndex()) > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    const QRect area = viewport()->rect().adjusted(24, 0, -24, 0);
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
}

void VDTableView::setModel(QAbstractItemModel* model)
{
    {
        QScopedValueRollback<bool> quiet(m_quiet, true);
        QTableView::setModel(model);
    }
    for (const QMetaObject::Connection& connection : qAsConst(m_modelConnections))
        disconnect(connection);
    m_modelConnections.clear();
    if (model) {
        // Columns fitted while the table was still empty are fitted again to its first rows.
        const auto fitFirstRows = [this] {
            if (!m_fittedRows && shownRowCount() > 0)
                fitColumnsLater();
        };
        m_modelConnections = {
            connect(model, &QAbstractItemModel::rowsInserted, this, fitFirstRows),
            connect(model, &QAbstractItemModel::modelReset, this, fitFirstRows),
            connect(model, &QAbstractItemModel::rowsInserted, this, &VDTableView::noteRowCounts),
            connect(model, &QAbstractItemModel::rowsRemoved, this, &VDTableView::noteRowCounts),
            connect(model, &QAbstractItemModel::layoutChanged, this, &VDTableView::noteRowCounts),
            connect(model, &QAbstractItemModel::modelReset, this, &VDTableView::noteRowCounts),
        };
    }
    noteRowCounts();
    m_rowHeight = -1;
    adoptRowHeight();
    m_restored = false;
    m_fitting = true;
    m_fittedRows = false;
    applyHiddenByDefault();
    updateHeaderMenu();
    fitColumnsLater();
}

void VDTableView::keyboardSearch(const QString& search)
{
    const auto* proxy = qobject_cast<const ObjectTreeProxy*>(model());
    if (proxy && proxy->isSearchEnabled())
        QTableView::keyboardSearch(search);
}

int VDTableView::sizeHintForRow(int row) const
{
    // Every row is one line of the same font with an icon of the view's size: a line with an
    // icon, and one row measured in all of its columns, stand for all of them.
    if (m_rowHeight < 0 && model()) {
        m_rowHeight = measureRowHeight(row);
        // Measured outside setModel() (the font or the icon size changed): the header learns the
        // new height once this pass is over.
        QMetaObject::invokeMethod(const_cast<VDTableView*>(this), &VDTableView::adoptRowHeight, Qt::QueuedConnection);
    }
    return m_rowHeight;
}

int VDTableView::measureRowHeight(int row) const
{
    ensurePolished();
    QStyleOptionViewItem option = viewOptions();
    QStyleOptionViewItem line = option;
    line.features |= QStyleOptionViewItem::HasDisplay | QStyleOptionViewItem::HasDecoration;
    line.text = QStringLiteral("Ag");
    int height = style()->sizeFromContents(QStyle::CT_ItemViewItem, &line, QSize(), this).height();
    for (int column = 0, columns = model()->columnCount(rootIndex()); column < columns; ++column) {
        const QModelIndex index = model()->index(row, column, rootIndex());
        height = qMax(height, itemDelegate(index)->sizeHint(option, index).height());
    }
    return showGrid() ? height + 1 : height;
}

void VDTableView::adoptRowHeight()
{
    // Rows of the default size are all the same to the header, and it keeps no record of each of
    // them through a layout change: a search or a sort over a hundred thousand rows would
    // otherwise make a persistent index for every one.
    if (m_rowHeight < 0 && model() && model()->rowCount(rootIndex()) > 0)
        m_rowHeight = measureRowHeight(0);
    if (m_rowHeight < 0)
        return;
    const int rowSize = qMax(m_rowHeight, verticalHeader()->minimumSectionSize());
    if (verticalHeader()->defaultSectionSize() != rowSize)
        verticalHeader()->setDefaultSectionSize(rowSize);
}

void VDTableView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_rowHeight = -1;
        fitColumnsLater();
    }
    QTableView::changeEvent(event);
}

void VDTableView::showEvent(QShowEvent* event)
{
    // Before the first paint, so that nobody sees the columns change.
    if (m_fitDue)
        fitColumns();
    QTableView::showEvent(event);
}

void VDTableView::hideEvent(QHideEvent* event)
{
    // The window may be on its way to close: what the operator last did must not wait.
    if (m_stateDelay->isActive()) {
        m_stateDelay->stop();
        publishHeaderState();
    }
    QTableView::hideEvent(event);
}

void VDTableView::applyHiddenByDefault()
{
    QScopedValueRollback<bool> quiet(m_quiet, true);
    for (int column = 0, columns = horizontalHeader()->count(); column < columns; ++column)
        setColumnHidden(column, m_hiddenByDefault.contains(column));
}

void VDTableView::fallBackToDefaults()
{
    // Whatever the owner set up before asking for the saved layout is part of the defaults, not
    // a change of the operator's to keep.
    m_stateDelay->stop();
    m_restored = false;
    m_fitting = true;
    m_fittedRows = false;
    applyHiddenByDefault();
    updateHeaderMenu();
    fitColumnsLater();
}

void VDTableView::fitColumnsLater()
{
    if (!m_fitting || m_fitDue)
        return;
    m_fitDue = true;
    // Measured once the owner has finished setting the table up, and only once it shows.
    if (isVisible())
        QMetaObject::invokeMethod(this, &VDTableView::fitColumns, Qt::QueuedConnection);
}

void VDTableView::fitColumns()
{
    if (!m_fitDue || !isVisible())
        return;
    m_fitDue = false;
    if (!m_fitting || !model())
        return;
    ensurePolished();
    QHeaderView* header = horizontalHeader();
    const QStyleOptionViewItem option = viewOptions();
    const int rows = qMin(shownRowCount(), FittedRows);
    m_fittedRows = rows > 0;
    const int grid = showGrid() ? 1 : 0;
    QScopedValueRollback<bool> quiet(m_quiet, true);
    for (int column = 0; column < header->count(); ++column) {
        if (header->isSectionHidden(column))
            continue;
        int width = header->sectionSizeHint(column);
        for (int row = 0; row < rows; ++row) {
            const QModelIndex index = model()->index(row, column, rootIndex());
            width = qMax(width, itemDelegate(index)->sizeHint(option, index).width() + grid);
        }
        header->resizeSection(column, qBound(header->minimumSectionSize(), width, WidestFittedColumn));
    }
}

void VDTableView::updateHeaderMenu()
{
    const QAbstractItemModel* source = model();
    const QList<QAction*> actions = m_headerMenu->actions();
    for (QAction* action : actions) {
        const int column = action->data().toInt();
        QString title;
        if (source) {
            title = source->headerData(column, Qt::Horizontal).toString();
            if (title.isEmpty())
                title = source->headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString();
        }
        action->setText(title);
        action->setChecked(!isColumnHidden(column));
    }
    // The last column shown stays: a header without sections offers no menu to get them back.
    const QHeaderView* header = horizontalHeader();
    const bool lastShown = header->count() - header->hiddenSectionCount() == 1;
    for (QAction* action : actions)
        action->setEnabled(!(lastShown && action->isChecked()));
}

void VDTableView::showHeaderMenu(const QPoint& pos)
{
    if (!m_headerMenu->isEmpty())
        m_headerMenu->popup(horizontalHeader()->viewport()->mapToGlobal(pos));
}

void VDTableView::noteHeaderChange()
{
    if (!m_quiet)
        m_stateDelay->start();
}

void VDTableView::showColumnByHand(int column, bool shown)
{
    // Qt's header tells nobody that a section was shown or hidden.
    setColumnHidden(column, !shown);
    if (shown)
        fitColumnsLater();
    noteHeaderChange();
}

void VDTableView::noteSectionResized(int section)
{
    // The last section follows the table's width by itself: that is no change of the operator's.
    const QHeaderView* header = horizontalHeader();
    int last = header->count() - 1;
    while (last >= 0 && header->isSectionHidden(header->logicalIndex(last)))
        --last;
    if (m_quiet || (header->stretchLastSection() && header->visualIndex(section) == last))
        return;
    m_fitting = false;
    noteHeaderChange();
}

void VDTableView::publishHeaderState()
{
    const QByteArray state = headerState();
    if (state == m_publishedState)
        return;
    m_publishedState = state;
    emit headerStateChanged(state);
}
