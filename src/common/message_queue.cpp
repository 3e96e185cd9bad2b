#include "message_queue.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <time.h>

#include "trace.h"

const char* c_mainmsgpath = ".";
int c_mainmsgid = -1;
int c_mainmsgtype = 1;

int CreateMessageQueue(const char* pathname)
{
    key_t key = ftok(pathname, 'a');
    if (key == -1) {
        trace_prefix("CreateMessageQueue", 13);
        printf("ftok create error: %d\n", errno);
        return 0;
    }
    for (;;) {
        int id = msgget(key, IPC_CREAT | 0777);
        if (id >= 0) {
            return id;
        }
        trace_prefix("CreateMessageQueue", 22);
        printf("msgget create error: %d\n", errno);
        // Removing the failed identifier (-1) is how the helper is defined;
        // it fails in practice and ends the loop.
        if (msgctl(id, IPC_RMID, nullptr) == -1) {
            trace_prefix("CreateMessageQueue", 25);
            printf("msgctl delete error: %d\n", errno);
            return -1;
        }
    }
}

int DeleteMessageQueue(int msqid)
{
    if (msgctl(msqid, IPC_RMID, nullptr) == -1) {
        trace_prefix("DeleteMessageQueue", 39);
        puts("msgctl(IPC_RMID) failed");
        return 0;
    }
    return 1;
}

int SetMessageQueue(int msqid)
{
    msqid_ds info;
    memset(&info, 0, sizeof(info));
    if (msgctl(msqid, IPC_STAT, &info) == -1) {
        printf("msg get info error: %s\n", strerror(errno));
        return 0;
    }
    info.msg_qbytes = 5242880;
    if (msgctl(msqid, IPC_SET, &info) == -1) {
        printf("msg set info error: %s\n", strerror(errno));
        return 0;
    }
    return 1;
}

int GetMessageQueueStatus(int msqid)
{
    msqid_ds info;
    memset(&info, 0, sizeof(info));
    if (msgctl(msqid, IPC_STAT, &info) == -1) {
        return printf("msg get info error: %s\n", strerror(errno));
    }
    printf("\n");
    printf("current number of bytes on queue is %ld\n", static_cast<long>(info.__msg_cbytes));
    printf("number of messages in queue is %ld\n", static_cast<long>(info.msg_qnum));
    printf("max number of bytes on queue is %ld\n", static_cast<long>(info.msg_qbytes));
    printf("pid of last msgsnd is %d\n", static_cast<int>(info.msg_lspid));
    printf("pid of last msgrcv is %d\n", static_cast<int>(info.msg_lrpid));
    printf("last msgsnd time is %s", ctime(&info.msg_stime));
    printf("last msgrcv time is %s", ctime(&info.msg_rtime));
    printf("last change time is %s", ctime(&info.msg_ctime));
    printf("msg uid is %d\n", static_cast<int>(info.msg_perm.uid));
    return printf("msg gid is %d\n", static_cast<int>(info.msg_perm.gid));
}
