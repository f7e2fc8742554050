/* Posts nothing and waits for nothing: shows that headers and library fit together, from C. */
#include <stdio.h>
#include <tavra/tavra_api.h>
#include <tavra/tavra_host.h>

int main(void) {
    TavraWindow receiver = TavraHost_CreateReceiver();
    TavraMessage message;
    if (receiver == NULL || TavraHost_ReceiverFd(receiver) < 0) return 1;
    if (TavraHost_WaitMessage(receiver, &message, 0) != 0) return 2;
    TavraHost_DestroyReceiver(receiver);
    puts("consumer in C: good");
    return 0;
}
