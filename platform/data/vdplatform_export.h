#pragma once

#include <QtGlobal>

#if defined(VDPLATFORM_LIBRARY)
#define VDPLATFORM_EXPORT Q_DECL_EXPORT
#else
#define VDPLATFORM_EXPORT Q_DECL_IMPORT
#endif
