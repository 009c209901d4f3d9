#pragma once

#include "vdplatform_export.h"

#include <QPixmap>
#include <QString>

// Draws the entries of the hit menu of a PromptMenuEdit: a rich text and a picture per uid.
class VDPLATFORM_EXPORT PromptMenuEditContentsFactory
{
public:
    PromptMenuEditContentsFactory();
    virtual ~PromptMenuEditContentsFactory();

    // Rich text of the entry of that uid.
    virtual QString text(unsigned int uid) const;
    // A picture beside it; a null one for none.
    virtual QPixmap pixmap(unsigned int uid) const;

private:
    Q_DISABLE_COPY(PromptMenuEditContentsFactory)
};
