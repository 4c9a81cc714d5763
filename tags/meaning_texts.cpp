#include "tags/meaning_texts.h"

namespace kvt
{

QString meaningColumnName(MeaningColumn column)
{
    static const char *const names[] = {"scale", "offset", "raw_low", "raw_high",
                                        "low",   "high",   "unit",    "decimals",
                                        "min",   "max",    "labels",  "bits"};
    return QLatin1String(names[static_cast<int>(column)]);
}

bool isNumberColumn(MeaningColumn column)
{
    return column != MeaningColumn::Unit && column != MeaningColumn::Labels &&
           column != MeaningColumn::Bits;
}

} // namespace kvt
