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
    // The tab's edits as parameters of the current object.
    virtual QHash<QString, QString> editedProperties() const;

public slots:
    // Hands the tab's edits on (the dialog's save).
    virtual void applyChanges();
    // The server has saved the object of this uid.
    virtual void saved(vorandel::TYPE_ID uid);

signals:
    void dataEdited();

protected:
    vorandel::OBJECT_HASH m_current;
    bool m_readOnly = false;
};
