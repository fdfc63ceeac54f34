#include "TQPlatform/Network/CurlFailure.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <curl/curl.h>
#include <openssl/x509_vfy.h>
#include <string>
#include <system_error>

namespace tq {
namespace {

using Code = URLError::Code;

struct Kind {
  CURLcode result;
  Code code;
};

constexpr std::array kinds{
    Kind{CURLE_URL_MALFORMAT, Code::badURL},
    Kind{CURLE_UNSUPPORTED_PROTOCOL, Code::badServerResponse},  // HTTP/0.9 and the like: the scheme was checked before
    Kind{CURLE_WEIRD_SERVER_REPLY, Code::badServerResponse},
    Kind{CURLE_COULDNT_RESOLVE_HOST, Code::cannotFindHost},
    Kind{CURLE_COULDNT_CONNECT, Code::cannotConnectToHost},
    Kind{CURLE_OPERATION_TIMEDOUT, Code::timedOut},
    Kind{CURLE_GOT_NOTHING, Code::networkConnectionLost},
    Kind{CURLE_PARTIAL_FILE, Code::networkConnectionLost},
    Kind{CURLE_SEND_ERROR, Code::networkConnectionLost},
    Kind{CURLE_RECV_ERROR, Code::networkConnectionLost},
    Kind{CURLE_HTTP2, Code::networkConnectionLost},
    Kind{CURLE_HTTP2_STREAM, Code::networkConnectionLost},
    Kind{CURLE_SSL_CONNECT_ERROR, Code::secureConnectionFailed},
    Kind{CURLE_SSL_CIPHER, Code::secureConnectionFailed},
    Kind{CURLE_SSL_CACERT_BADFILE, Code::secureConnectionFailed},  // the system has no certificates to check against
    Kind{CURLE_PEER_FAILED_VERIFICATION, Code::serverCertificateUntrusted},
    Kind{CURLE_SSL_INVALIDCERTSTATUS, Code::serverCertificateUntrusted},
    Kind{CURLE_SSL_ISSUER_ERROR, Code::serverCertificateUntrusted},
};

/// What is wrong with a certificate, by OpenSSL's verdict on its chain. libcurl compares the host only after the chain
/// was found good, and then has no verdict or the unspecified one to tell.
std::string_view certificateFault(long verdict) {
  switch (verdict) {
    case X509_V_OK:
    case X509_V_ERR_UNSPECIFIED:
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH: return "it is made for another host";
    case X509_V_ERR_CERT_HAS_EXPIRED: return "it has expired";
    case X509_V_ERR_CERT_NOT_YET_VALID: return "it is not valid yet";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT: return "it is signed by the server itself";
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE: return "its issuer is not known to this computer";
    default: return {};
  }
}

/// Without the full stop.
std::string sentence(Code code, const HTTPAddress& address) {
  switch (code) {
    case Code::badURL: return "The address of " + address.host() + " cannot be used";
    case Code::timedOut: return "The request to " + address.host() + " timed out";
    case Code::cancelled: return "The request to " + address.host() + " was cancelled";
    case Code::cannotFindHost: return "The host " + address.host() + " could not be found";
    case Code::cannotConnectToHost: return "Could not connect to " + address.place();
    case Code::networkConnectionLost: return "The connection to " + address.place() + " was lost";
    case Code::secureConnectionFailed: return "A secure connection to " + address.place() + " could not be set up";
    case Code::serverCertificateUntrusted: return "The certificate of " + address.place() + " is not trusted";
    case Code::badServerResponse: return "The answer of " + address.place() + " cannot be understood";
    case Code::userAuthenticationRequired:
    case Code::userCancelledAuthentication:
    case Code::unknown: break;
  }
  return "The request to " + address.host() + " failed";
}

/// The `errno` of the failed connection; 0 when there was none.
int osErrorOf(void* handle) {
  long error = 0;
  curl_easy_getinfo(handle, CURLINFO_OS_ERRNO, &error);
  return static_cast<int>(error);
}

/// What libcurl knows besides its result code.
std::string reasonOf(Code code, CURLcode result, void* handle) {
  switch (code) {
    case Code::serverCertificateUntrusted: {
      long verdict = 0;
      curl_easy_getinfo(handle, CURLINFO_SSL_VERIFYRESULT, &verdict);
      return std::string(certificateFault(verdict));
    }
    case Code::cannotConnectToHost: {
      const int error = osErrorOf(handle);
      return error == 0 ? "" : std::generic_category().message(error);
    }
    case Code::unknown: return curl_easy_strerror(result);
    default: return {};
  }
}

}  // namespace

URLError failure(URLError::Code code, const HTTPAddress& address, std::string_view reason) {
  std::string text = sentence(code, address);
  if (!reason.empty()) text.append(": ").append(reason);
  return {code, text + "."};
}

/// A server that resets at once may do so before or after the connection counts as made; to a user it is one thing.
URLError failureOf(int result, void* handle, const HTTPAddress& address) {
  const auto* const kind = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.result == result; });
  Code code = kind == kinds.end() ? Code::unknown : kind->code;
  if (code == Code::cannotConnectToHost && osErrorOf(handle) == ECONNRESET) code = Code::networkConnectionLost;
  return failure(code, address, reasonOf(code, static_cast<CURLcode>(result), handle));
}

}  // namespace tq
