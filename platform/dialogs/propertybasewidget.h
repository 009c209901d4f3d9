#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QWidget>

// A tab of a properties dialog that shows and edits one object.
class VDPLATFORM_EXPORT PropertyBaseWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PropertyBaseWidget(QWidget* parent = nullptr);

    virtual void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }
    // The object to show: a hash of one entry, its uid to its record.
    virtual void setCurrent(const vorandel::OBJECT_HASH& objects);
    const vorandel::OBJECT_HASH& current() const { return m_current; }
    // The record of the object shown, or an invalid one.
    const vorandel::ObjectInfo& currentObject() const;
    // The tab's edits as parameters of the current object.
    virtual QHash<QString, QString> editedProperties() const;
    // The tab's edits as records: the current object's uid to its uid, type, parent and only
    // the edited parameters; empty when nothing was edited.
    virtual vorandel::OBJECT_HASH changedObjects() const;

public slots:
    // Hands the tab's edits on (the dialog's save).
    virtual void applyChanges();
    // The server has saved the object of this uid: its edits become what the tab shows.
    virtual void saved(vorandel::TYPE_ID uid);

signals:
    void dataEdited();

protected:
    vorandel::OBJECT_HASH m_current;
    bool m_readOnly = false;
};
