#include "vdtreebox.h"

#include "platformlogging.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleOptionComboBox>
#include <QTreeView>

namespace {
constexpr int PageStep = 10;
constexpr int AllTheWay = 1 << 20;
}  // namespace

VDTreeBox::VDTreeBox(QWidget* parent) : VDComboBox(parent), m_tree(new QTreeView(this))
{
    m_tree->setObjectName(QStringLiteral("treeView"));
    m_tree->header()->hide();
    m_tree->setItemsExpandable(true);
    m_tree->setRootIsDecorated(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setView(m_tree);
    // Installed after the pop-up's own filters, so they see the choice first: QComboBox would
    // take it as a row of its root, which a node deeper down isn't.
    m_tree->installEventFilter(this);
    m_tree->viewport()->installEventFilter(this);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &VDTreeBox::keepComboEmpty);
}

VDTreeBox::~VDTreeBox() = default;

void VDTreeBox::setModel(QAbstractItemModel* model)
{
    for (const auto& connection : qAsConst(m_modelConnections))
        disconnect(connection);
    m_modelConnections.clear();
    m_defaultRoot = QModelIndex();
    QComboBox::setModel(model);
    keepComboEmpty();
    m_watched = model;
    if (model) {
        // After QComboBox's own connections, so that whatever it chose for itself is undone here.
        using M = QAbstractItemModel;
        const auto changed = [this] { modelChanged(); };
        m_modelConnections << connect(model, &M::rowsRemoved, this, changed)
                           << connect(model, &M::rowsInserted, this, changed)
                           << connect(model, &M::rowsMoved, this, changed)
                           << connect(model, &M::layoutChanged, this, changed)
                           << connect(model, &M::modelReset, this, changed)
                           << connect(model, &M::dataChanged, this, [this] { update(); });
    }
    setCurrentModelIndex({});
}

void VDTreeBox::setDefaultRootIndex(const QModelIndex& index)
{
    m_defaultRoot = index;
    setRootModelIndex(index);
    keepComboEmpty();
}

QModelIndex VDTreeBox::defaultRootIndex() const
{
    return m_defaultRoot;
}

QModelIndex VDTreeBox::currentModelIndex() const
{
    return m_current;
}

void VDTreeBox::setCurrentModelIndex(const QModelIndex& index)
{
    if (index.isValid() && index.model() != model()) {
        qCWarning(lcWidgets) << "fail: a node of another model can't be chosen in" << objectName();
        return;
    }
    const QModelIndex node = index.isValid() ? index.siblingAtColumn(modelColumn()) : QModelIndex();
    if (m_hasCurrent == node.isValid() && QModelIndex(m_current) == node)
        return;
    m_current = node;
    m_hasCurrent = node.isValid();
    updateClearButton();
    update();
    emit currentModelIndexChanged(node);
}

bool VDTreeBox::hasChoice() const
{
    return m_current.isValid();
}

void VDTreeBox::showPopup()
{
    setRootModelIndex(m_defaultRoot);
    // A list keeps its names at the left edge; only a tree needs room for branch signs.
    bool branches = false;
    for (int row = 0, rows = model() ? model()->rowCount(m_defaultRoot) : 0; row < rows && !branches; ++row)
        branches = model()->hasChildren(model()->index(row, 0, m_defaultRoot));
    m_tree->setRootIsDecorated(branches);
    m_tree->expandAll();
    m_pressedInPopup = false;
    // Wide enough for the deepest name, whatever the width of the box.
    m_tree->resizeColumnToContents(0);
    const int needed = m_tree->columnWidth(0) + 2 * m_tree->frameWidth() + m_tree->verticalScrollBar()->sizeHint().width();
    m_tree->setMinimumWidth(qMin(needed, 600));
    VDComboBox::showPopup();
    if (m_current.isValid()) {
        m_tree->setCurrentIndex(m_current);
        m_tree->scrollTo(m_current, QAbstractItemView::PositionAtCenter);
    } else {
        m_tree->setCurrentIndex(QModelIndex());
    }
}

void VDTreeBox::clearSelection()
{
    setCurrentModelIndex({});
}

void VDTreeBox::pick(const QModelIndex& index)
{
    const bool choosable = index.isValid() && (index.flags() & Qt::ItemIsEnabled) && (index.flags() & Qt::ItemIsSelectable);
    if (!choosable)
        return;
    hidePopup();
    setCurrentModelIndex(index);
}

bool VDTreeBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_tree->viewport()) {
        if (event->type() == QEvent::MouseButtonPress) {
            m_pressedInPopup = true;
        } else if (event->type() == QEvent::MouseButtonRelease) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            if (!m_tree->viewport()->rect().contains(mouse->pos()))
                return VDComboBox::eventFilter(watched, event);  // outside: the pop-up closes
            const QModelIndex index = m_tree->indexAt(mouse->pos());
            // A release on the branch sign or between the nodes leaves the pop-up open.
            if (m_pressedInPopup && index.isValid() && m_tree->visualRect(index).contains(mouse->pos()))
                pick(index);
            m_pressedInPopup = false;
            return true;
        }
    } else if (watched == m_tree && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter || key->key() == Qt::Key_Select) {
            pick(m_tree->currentIndex());
            return true;
        }
    }
    return VDComboBox::eventFilter(watched, event);
}

void VDTreeBox::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (event->modifiers() & Qt::AltModifier)
            break;  // opens or closes the pop-up
        moveBy(event->key() == Qt::Key_Up ? -1 : 1);
        return;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        moveBy(event->key() == Qt::Key_PageUp ? -PageStep : PageStep);
        return;
    case Qt::Key_Home:
    case Qt::Key_End:
        moveBy(event->key() == Qt::Key_Home ? -AllTheWay : AllTheWay);
        return;
    default:
        if (!event->text().isEmpty() && event->text().at(0).isLetterOrNumber() && event->modifiers() == Qt::NoModifier) {
            jumpToInitial(event->text());
            return;
        }
        break;
    }
    VDComboBox::keyPressEvent(event);
}

void VDTreeBox::wheelEvent(QWheelEvent* event)
{
    // A wheel turned to scroll the form must not change the choice on its way past.
    event->ignore();
}

void VDTreeBox::initLabel(QStyleOptionComboBox* option) const
{
    if (!m_current.isValid())
        return;
    option->currentText = m_current.data(Qt::DisplayRole).toString();
    option->currentIcon = m_current.data(Qt::DecorationRole).value<QIcon>();
}

QVector<QModelIndex> VDTreeBox::nodesInOrder() const
{
    QVector<QModelIndex> nodes;
    if (!model())
        return nodes;
    const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
        for (int row = 0, rows = model()->rowCount(parent); row < rows; ++row) {
            const QModelIndex node = model()->index(row, modelColumn(), parent);
            nodes.append(node);
            walk(model()->index(row, 0, parent));
        }
    };
    walk(m_defaultRoot);
    return nodes;
}

void VDTreeBox::moveBy(int step)
{
    const QVector<QModelIndex> nodes = nodesInOrder();
    if (nodes.isEmpty())
        return;
    const int at = nodes.indexOf(m_current);
    const int to = at < 0 ? (step > 0 ? 0 : nodes.size() - 1) : qBound(0, at + qBound(-nodes.size(), step, nodes.size()), nodes.size() - 1);
    setCurrentModelIndex(nodes.at(to));
}

void VDTreeBox::jumpToInitial(const QString& text)
{
    const QVector<QModelIndex> nodes = nodesInOrder();
    const int from = nodes.indexOf(m_current);
    for (int i = 1; i <= nodes.size(); ++i) {
        const QModelIndex node = nodes.at((from + i) % nodes.size());
        if (node.data().toString().startsWith(text, Qt::CaseInsensitive))
            return setCurrentModelIndex(node);
    }
}

void VDTreeBox::keepComboEmpty()
{
    // QComboBox picks a row of its own after some changes of the model; the choice here is
    // m_current alone.
    if (currentIndex() != -1)
        setCurrentIndex(-1);
}

void VDTreeBox::modelChanged()
{
    keepComboEmpty();
    checkCurrent();
    update();
}

void VDTreeBox::checkCurrent()
{
    if (m_hasCurrent && !m_current.isValid()) {
        m_hasCurrent = false;
        currentLost();
    }
}

void VDTreeBox::currentLost()
{
    updateClearButton();
    emit currentModelIndexChanged({});
}
