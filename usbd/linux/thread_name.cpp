#include "thread_name.h"

#include <pthread.h>

namespace tavra::usbd {

void nameThisThread(const char* name) {
    pthread_setname_np(pthread_self(), name);
}

}  // namespace tavra::usbd
