// A host that links the driver, against the usual way.
#include "driver/entry_points.h"
#include "driver/loaded_version.h"

int main()
{
    static ComInfo info = {};
    SetComInfo(&info);
    const bool isSetUp = QueryFinishFlag() == 1 && ComCommunication() == nullptr;
    return isSetUp && kvtLoadedVersion(reinterpret_cast<void *>(&SetComInfo)) == KVT_VERSION ? 0
                                                                                             : 1;
}
