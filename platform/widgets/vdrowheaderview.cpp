#include "vdrowheaderview.h"

#include <QEvent>
#include <QStyle>

VDRowHeaderView::VDRowHeaderView(QWidget* parent) : QHeaderView(Qt::Vertical, parent)
{
    // What the view's own row header would be.
    setSectionsClickable(true);
    setHighlightSections(true);
    forgetSizes();
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
    // Row labels are numbers, and the last is the longest: its size stands for every section.
    const int sections = count();
    if (sections != m_measuredCount) {
        m_measuredCount = sections;
        m_sectionSize = QHeaderView::sectionSizeFromContents(sections > 0 ? sections - 1 : logicalIndex)
                            .expandedTo(QHeaderView::sectionSizeFromContents(0));
    }
    return m_sectionSize;
}

void VDRowHeaderView::dataChanged(const QModelIndex&, const QModelIndex&, const QVector<int>&)
{
    // Cells changed: no row label and no row height did.
}

void VDRowHeaderView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        forgetSizes();
    QHeaderView::changeEvent(event);
}

void VDRowHeaderView::forgetSizes()
{
    m_measuredCount = -1;
    // The least height a section may take, as the header would work it out on every call.
    const int margin = 2 * style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    setMinimumSectionSize(fontMetrics().height() + margin);
}
