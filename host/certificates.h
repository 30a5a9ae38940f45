// The service's certificates in the user's NSS database, and the names and origins that pick a
// certificate.
//
// The service answers HTTPS on the loopback interface with its own certificate; a browser on
// Linux trusts it only once the certificate ("veldorane_quillport", trust "P,,") and its root
// ("veldorane_quillport_root", trust "C,,") stand in sql:$HOME/.pki/nssdb of the user who runs
// the commands. Everything goes through certutil in a shell; paths are not quoted. Nothing
// reports a failure: a missing certutil shows only as a count of 0.
//
// Thread-safe; no state of its own (configuration reads take the configuration lock).
//
// No export of the module reaches this code.
#ifndef VSM_HOST_CERTIFICATES_H_
#define VSM_HOST_CERTIFICATES_H_

#include <cstdint>
#include <string>

namespace vsm {

// The public host name under which pages reach the service on the loopback interface. It
// resolves to 127.0.0.1, and the service's own certificate is issued for it, which is why it
// has certificate file names of its own in GetHostCertNames.
constexpr char kServiceLocalHostName[] = "loopback.veldorane.com";

// Counts the service's entries in the NSS database.
constexpr char kCertCountCommand[] =
    "certutil -L -d sql:$HOME/.pki/nssdb| grep veldorane_quillport| wc -l";

// "<root>DebInstallCertCheck&": the check program, sent to the background by the shell.
std::string GetCertCheckCommand();

// Ten times the number of installed entries: the line feed of the count is replaced by the
// digit 0, so both certificates give 20. Callers only test against zero, and the factor of ten
// is kept as what they have always seen. 0 when nothing is installed or certutil is missing.
int64_t CountInstalledCerts();
// The same on the first output line of `command`; "2\n" gives 20, no output gives 0.
int64_t CountInstalledCertsWith(const char* command);

// Adds the server certificate (<root>server.der) and then the root (<root>cert/cacert.pem).
void InstallCerts();
std::string GetServerCertInstallCommand();
std::string GetRootCertInstallCommand();

// Writes `uname -a` to <log directory>SystemInfo.log.
void WriteSystemInfo();
std::string GetSystemInfoCommand();

// The origin of a request in the form in which origins are compared: the scheme and host (and
// port) with the path cut off, the host's case kept, and non-ASCII labels in "xn--" form.
// Empty and "null" (any case) come back as they are; a text that holds neither "http://" nor
// "https://" anywhere (ignoring case) gives an empty string, and so does a host that can't be
// encoded.
std::string NormalizeOrigin(const std::string& origin);

// The certificate and key file names configured for `host`: cert_name and key_name in the
// configuration file's section named `host`, empty when absent. When both are empty and `host`
// is kServiceLocalHostName (ignoring case), they are "server.pem.lvsc" and
// "server_key.pem.lvsc". Empty results mean the caller uses the default certificate files.
void GetHostCertNames(const std::string& host, std::string* certName, std::string* keyName);

}  // namespace vsm

#endif  // VSM_HOST_CERTIFICATES_H_
