/*
 * vsm.h - the public C interface of libvsm.so, the manager module ("vsm") of the local
 * device-access service.
 *
 * This is the only header a host includes. The module exports exactly these ten functions.
 * Text arguments are NUL-terminated single-byte strings that stay owned by the caller; the
 * module copies what it keeps. Any host thread may call any export at any time, with two
 * exceptions the host's own order guarantees: DoAction with 0 or 4 (start-up) runs before the
 * first command, and DoAction with 3 (tear-down) overlaps no other call.
 *
 * Calling order of a host: GetAlias, GetVersionDesc, GetPorts (any time, they touch no state),
 * DoAction(0 or 4, ...) once, then DistributeCommand for every command addressed to "vsm",
 * GetWaitTimeout as often as it likes, and DoAction(3, ...) last.
 */
#ifndef VSM_H_
#define VSM_H_

#ifdef __cplusplus
extern "C" {
#endif

/* The host's send-back function. It receives each answer of a command once: the answer text,
 * an optional binary block and its length. The returned byte is read as a signed 8-bit value
 * and becomes the result of DistributeCommand. `extra` is always 0. */
typedef char (*SendBackCallback)(unsigned int sendBackKey, unsigned long long sendBackContext,
                                 const char* text, const void* binary, unsigned int binaryLength,
                                 long long extra);

/* Lifecycle. 0: start-up (configuration, folders, log); 4: the same in work mode 3; 3: delete
 * the module's state; 2: nothing (result 1); 1 and 5 or above: nothing (result 0). */
int DoAction(unsigned int action, const char* firstText, const char* secondText,
             unsigned int instanceNumber);

/* Has no effect: closing a connection changes no state of the module. */
void CloseWebSocket(unsigned int connection);

/* 1 while a command runs and for 30 seconds after the last command or send-back; 100 once the
 * module has been idle for 31 seconds or longer. */
int GetWaitTimeout(void);

/* Writes "vsm" and its NUL (4 bytes) to `out` when it is not null; returns 4. */
int GetAlias(char* out);

/* Writes the version description and its NUL to `out` when it is not null; returns its length
 * including the NUL (16). */
int GetVersionDesc(char* out);

/* Writes 18626 when `secondPort` is non-zero, else 18625, to `out` when it is not null;
 * returns 1. */
int GetPorts(unsigned char secondPort, unsigned int* out);

/* Runs one command. `mustBeZero` other than 0 ends the call with 0. `url`, `text` and `origin`
 * must not be null (a null one raises std::logic_error through this call). The answer goes to
 * `sendBackHandle` once; the result is its byte, or 0 when no answer could be sent. */
int DistributeCommand(unsigned int sendBackKey, unsigned long long sendBackContext, int mustBeZero,
                      const char* url, const char* text, const void* body, unsigned int bodyLength,
                      unsigned int clientSupported, SendBackCallback sendBackHandle,
                      unsigned int clientSocket, const char* origin, unsigned long long hostValue1,
                      unsigned long long hostValue2, unsigned long long hostValue3);

/* Copies the 2052-byte record stored under the GUID of `url` ("/GetEncryptedImageMap?...GUID=")
 * to `out` (which must hold 2052 bytes; null asks for the length only) and sets *outLength to
 * 2052. Returns 1 when the record exists, else 0. `outLength` must not be null. */
int GetImage(const char* url, void* out, unsigned int* outLength);

/* Stores `dataLength` bytes (at most 2052; more ends the process) zero-padded to 2052 under the
 * GUID of `url` ("/SetEncryptedImageMap?...GUID="), or removes the record when `data` is null.
 * Returns 1, or 0 when the URL names no GUID. */
int SetImage(const char* url, const void* data, unsigned int dataLength);

/* The file white list: "fileInQPTWhiteList" answers 0 when `argument` is listed, else -1;
 * "addFileToWhiteList" adds it and answers 0. The sub-command is compared over 18 bytes.
 * Anything else, a null text or a non-null `mustBeNull` answers -1. */
int Reserved(const char* subCommand, const char* argument, const void* mustBeNull);

#ifdef __cplusplus
}
#endif

#endif /* VSM_H_ */
