#include "promptmenueditcontentsfactory.h"

PromptMenuEditContentsFactory::PromptMenuEditContentsFactory() = default;

PromptMenuEditContentsFactory::~PromptMenuEditContentsFactory() = default;

QString PromptMenuEditContentsFactory::text(unsigned int uid) const
{
    return QString::number(uid);
}

QPixmap PromptMenuEditContentsFactory::pixmap(unsigned int) const
{
    return {};
}
