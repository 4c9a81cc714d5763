// What the program's exit status means.
#ifndef KVT_APPS_KVT_EXIT_CODES_H
#define KVT_APPS_KVT_EXIT_CODES_H

namespace kvt
{

enum ExitCode {
    EXIT_GOOD = 0,      ///< all went well
    EXIT_NO_ANSWER = 1, ///< the PLC refused or did not answer; a replay differed; what a plan was
                        ///< asked for cannot be had; output was lost
    EXIT_USAGE = 2,     ///< wrong usage or input
    EXIT_NO_LINE = 3    ///< the line could not be opened, or went away for good
};

} // namespace kvt

#endif
