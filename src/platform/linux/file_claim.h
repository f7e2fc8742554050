// Whose a file is while it is written: advisory locks (flock(2)), which every movie's file of this library
// takes, in any process. Other programs are not held up by them, and where the file system has none nobody
// is. Only plain files have a writer; devices and pipes are anybody's.
//
// Any thread. A claim ends with its descriptor.
#pragma once

#include "base/status.h"

namespace tavra::platform {

// Opens the file, makes it if it is not there, claims it for its writer and empties it. 32: somebody else
// writes or reads it, and it stays as it is; else the system's error. `flags`: further ones of open(2).
Status createClaimed(const char* name, int flags, int& descriptor);

// Keeps writers off for as long as it is read. A file that is being written is read without.
void claimForReading(int descriptor);

// Whether somebody writes the file, or keeps writers off, at this moment; false where it cannot be looked at.
// For telling why a movie could not be made; a writer claims and sees.
bool isClaimed(const char* name);

}  // namespace tavra::platform
