#ifndef OLED_COMMON_MESSAGE_QUEUE_H
#define OLED_COMMON_MESSAGE_QUEUE_H

// System V message-queue helpers kept for other programs of the appliance;
// the daemon itself does not call them.
extern const char* c_mainmsgpath;
extern int c_mainmsgid;
extern int c_mainmsgtype;

int CreateMessageQueue(const char* pathname);
int DeleteMessageQueue(int msqid);
int SetMessageQueue(int msqid);
int GetMessageQueueStatus(int msqid);

#endif
