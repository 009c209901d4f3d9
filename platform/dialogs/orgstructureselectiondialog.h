#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QDialog>

class GrantedProxyModel;
class QDialogButtonBox;
class QTreeView;

// Asks the operator for a unit of the organisation structure: the root, a firm or a department.
// exec() gives QDialog::Accepted once one is chosen, and selected() names it.
class VDPLATFORM_EXPORT OrgstructureSelectionDialog : public QDialog
{
    Q_OBJECT
public:
    explicit OrgstructureSelectionDialog(QWidget* parent = nullptr);
    ~OrgstructureSelectionDialog() override;

    // The chosen unit; 0 while none is.
    vorandel::TYPE_ID selected() const;
    // Preselects a unit.
    void setSelected(vorandel::TYPE_ID uid);

    QTreeView* treeView() const { return m_tree; }

private:
    void updateButtons();

    GrantedProxyModel* m_proxy = nullptr;
    QTreeView* m_tree = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
};
