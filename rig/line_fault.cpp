#include "rig/line_fault.h"

namespace kvt
{

LineReaction undisturbed(const PlcReaction &honest)
{
    LineReaction reaction;
    reaction.lineBreak_ns = honest.lineBreak_ns;
    for (const Transmission &transmission : honest.transmissions)
        reaction.bytes.append({transmission.start_ns, transmission.bytes});
    return reaction;
}

} // namespace kvt
