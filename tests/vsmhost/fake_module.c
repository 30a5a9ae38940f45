/* A stand-in module for the host tests: the ten exports of vsm.h with answers that show what
 * the host handed over, and the faults a real module could have. Alias "fak", ports 7 and 8.
 *   a text holding "silent"  no answer at all
 *   a text holding "binary"  an answer with a 4-byte binary block
 *   a text holding "latin"   an answer that is not UTF-8
 *   a text holding "closed"  the connections CloseWebSocket has heard of, in order
 *   anything else            url, origin, key, whether clientSocket is a socket, and the text
 * DoAction and CloseWebSocket append a line to fake_actions.log in the working folder. */
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "vsm.h"

static char closed[4096];

static void Record(const char* what, unsigned number) {
  FILE* file = fopen("fake_actions.log", "a");
  if (file != NULL) {
    fprintf(file, "%s %u\n", what, number);
    fclose(file);
  }
}

int DoAction(unsigned int action, const char* firstText, const char* secondText,
             unsigned int instanceNumber) {
  Record("action", action);
  return 1;
}

void CloseWebSocket(unsigned int connection) {
  size_t used = strlen(closed);
  snprintf(closed + used, sizeof closed - used, "%u ", connection);
  Record("close", connection);
}

int GetWaitTimeout(void) { return 42; }

int GetAlias(char* out) {
  if (out != NULL) memcpy(out, "fak", 4);
  return 4;
}

int GetVersionDesc(char* out) {
  if (out != NULL) memcpy(out, "fake_1", 7);
  return 7;
}

int GetPorts(unsigned char secondPort, unsigned int* out) {
  if (out != NULL) *out = secondPort ? 8 : 7;
  return 1;
}

int DistributeCommand(unsigned int sendBackKey, unsigned long long sendBackContext, int mustBeZero,
                      const char* url, const char* text, const void* body, unsigned int bodyLength,
                      unsigned int clientSupported, SendBackCallback sendBackHandle,
                      unsigned int clientSocket, const char* origin, unsigned long long hostValue1,
                      unsigned long long hostValue2, unsigned long long hostValue3) {
  char answer[8192];
  struct stat info;
  if (strstr(text, "silent") != NULL) return 0;
  if (strstr(text, "binary") != NULL) {
    return sendBackHandle(sendBackKey, sendBackContext, "{\"binary\":true}", "\0\1\377B", 4, 0);
  }
  if (strstr(text, "latin") != NULL) {
    return sendBackHandle(sendBackKey, sendBackContext, "caf\xe9", NULL, 0, 0);
  }
  if (strstr(text, "closed") != NULL) {
    return sendBackHandle(sendBackKey, sendBackContext, closed, NULL, 0, 0);
  }
  snprintf(answer, sizeof answer, "url=%s\norigin=%s\nkey=%u\nsocket=%s\nsupported=%u\ntext=%s",
           url, origin, sendBackKey,
           fstat((int)clientSocket, &info) == 0 && S_ISSOCK(info.st_mode) ? "yes" : "no",
           clientSupported, text);
  return sendBackHandle(sendBackKey, sendBackContext, answer, NULL, 0, 0);
}

int GetImage(const char* url, void* out, unsigned int* outLength) { return 0; }

int SetImage(const char* url, const void* data, unsigned int dataLength) { return 0; }

int Reserved(const char* subCommand, const char* argument, const void* mustBeNull) { return -1; }
