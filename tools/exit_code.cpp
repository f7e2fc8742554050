#include "exit_code.h"

namespace tavra::tool {

const char* const kExitCodeHelp =
    "Exit codes: 0 success; 1 the work could not be done; 2 wrong command line; 3 no camera, not the one "
    "asked for, "
    "or in use; 4 the camera went away; 5 no frame came in time; 130 interrupted.";

}  // namespace tavra::tool
