#include "vdrowheaderview.h"

#include <QEvent>

VDRowHeaderView::VDRowHeaderView(QWidget* parent) : QHeaderView(Qt::Vertical, parent)
{
    // What the view's own row header would be.
    setSectionsClickable(true);
    setHighlightSections(true);
}

void VDRowHeaderView::setModel(QAbstractItemModel* model)
{
    disconnect(m_headerDataChanged);
    QHeaderView::setModel(model);
    forgetSizes();
    if (model)
        m_headerDataChanged = connect(model, &QAbstractItemModel::headerDataChanged, this, &VDRowHeaderView::forgetSizes);
}

QSize VDRowHeaderView::sectionSizeFromContents(int logicalIndex) const
{
    const int length = model()->headerData(logicalIndex, orientation()).toString().size();
    auto it = m_sizeByLabelLength.constFind(length);
    if (it == m_sizeByLabelLength.cend())
        it = m_sizeByLabelLength.insert(length, QHeaderView::sectionSizeFromContents(logicalIndex));
    return it.value();
}

void VDRowHeaderView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        forgetSizes();
    QHeaderView::changeEvent(event);
}

void VDRowHeaderView::forgetSizes()
{
    m_sizeByLabelLength.clear();
}
