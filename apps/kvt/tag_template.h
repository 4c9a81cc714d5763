// A tag list to begin with.
#ifndef KVT_APPS_KVT_TAG_TEMPLATE_H
#define KVT_APPS_KVT_TAG_TEMPLATE_H

#include <QString>

namespace kvt
{

/// Returns a commented list with every column, which loads without errors and warnings.
QString tagTemplate();

} // namespace kvt

#endif
