/* A stand-in module for the host tests, alias "fak", ports 7 and 8. A text holding "silent" gets
 * no answer, "binary" an answer with a 4-byte block, "latin" an answer that is not UTF-8,
 * "closed" the connections CloseWebSocket heard of; anything else gets url, origin, key,
 * whether clientSocket is a socket, and the text. DoAction and CloseWebSocket append a line to
 * fake_actions.log in the working folder. */
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "vsm.h"

static char closed[4096];

static void Record(const char* what, unsigned number) {
  FILE* file = fopen("fake_actions.log", "a");
  if (file != NULL) fprintf(file, "%s %u\n", what, number), fclose(file);
}

int DoAction(unsigned int action, const char* first, const char* second, unsigned int instance) {
  Record("action", action);
  return 1;
}

void CloseWebSocket(unsigned int connection) {
  snprintf(closed + strlen(closed), sizeof closed - strlen(closed), "%u ", connection);
  Record("close", connection);
}

int GetWaitTimeout(void) { return 42; }
int GetAlias(char* out) { return out != NULL ? memcpy(out, "fak", 4), 4 : 4; }
int GetVersionDesc(char* out) { return out != NULL ? memcpy(out, "fake_1", 7), 7 : 7; }
int GetPorts(unsigned char second, unsigned int* out) {
  return out != NULL ? *out = second ? 8 : 7, 1 : 1;
}
int GetImage(const char* url, void* out, unsigned int* outLength) { return 0; }
int SetImage(const char* url, const void* data, unsigned int dataLength) { return 0; }
int Reserved(const char* subCommand, const char* argument, const void* mustBeNull) { return -1; }

int DistributeCommand(unsigned int key, unsigned long long context, int mustBeZero, const char* url,
                      const char* text, const void* body, unsigned int bodyLength,
                      unsigned int supported, SendBackCallback sendBack, unsigned int socket,
                      const char* origin, unsigned long long v1, unsigned long long v2,
                      unsigned long long v3) {
  char answer[8192];
  struct stat info;
  if (strstr(text, "silent") != NULL) return 0;
  if (strstr(text, "binary") != NULL)
    return sendBack(key, context, "{\"binary\":true}", "\0\1\377B", 4, 0);
  if (strstr(text, "latin") != NULL) return sendBack(key, context, "caf\xe9", NULL, 0, 0);
  if (strstr(text, "closed") != NULL) return sendBack(key, context, closed, NULL, 0, 0);
  snprintf(answer, sizeof answer, "url=%s\norigin=%s\nkey=%u\nsocket=%s\nsupported=%u\ntext=%s",
           url, origin, key,
           fstat((int)socket, &info) == 0 && S_ISSOCK(info.st_mode) ? "yes" : "no", supported,
           text);
  return sendBack(key, context, answer, NULL, 0, 0);
}
