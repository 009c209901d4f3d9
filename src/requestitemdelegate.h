#pragma once

#include "styleditemdelegate.h"

// Names a request in the list of the removal wizard, and says there when removing it will
// dismiss its worker.
class RequestItemDelegate : public StyledItemDelegate
{
    Q_OBJECT
public:
    explicit RequestItemDelegate(QObject* parent = nullptr);

    // Reads the object's type from column 1 of the row and its parameters from the index under
    // Qt::UserRole + 1.
    QString name(const QModelIndex& index) const override;
};
