#pragma once

#include "promptmenueditcontentsfactory.h"

// Draws a worker in the hit menu of the visitor page's search fields: his name, his personnel
// number and his department, beside his photo.
class RequestWorkerContentsFactory : public PromptMenuEditContentsFactory
{
public:
    ~RequestWorkerContentsFactory() override;

    QString text(unsigned int uid) const override;
    QPixmap pixmap(unsigned int uid) const override;
};
