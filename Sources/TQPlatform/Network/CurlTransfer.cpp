#include "TQPlatform/Network/CurlTransfer.hpp"

#include <algorithm>
#include <curl/curl.h>
#include <string_view>

#include "TQPlatform/Network/CurlFailure.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// The caller limits the time; libcurl's own limit on connecting is moved out of the way, to the most it takes.
constexpr long longestConnect = 2'147'482;  // seconds

template <class Value>
void set(void* handle, CURLoption option, Value value) {
  if (const CURLcode code = curl_easy_setopt(handle, option, value); code != CURLE_OK)
    throw URLError(URLError::Code::unknown, std::string("The request cannot be set up: ") + curl_easy_strerror(code));
}

template <class Value>
Value get(void* handle, CURLINFO info) {
  Value value{};
  curl_easy_getinfo(handle, info, &value);
  return value;
}

/// Room is made at once for an answer whose size is told, as far as that is believed before it has come.
constexpr curl_off_t mostRoom = 256 << 20;

/// RFC 9110, section 5.6.2: what a method and a header's name are made of.
bool isToken(std::string_view text) {
  constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           marks.find(c) != std::string_view::npos;
  });
}

/// Section 5.5: no control character but the tab.
bool isFieldValue(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f; });
}

bool hasHeader(const URLRequest& request, std::string_view name) {
  return std::any_of(request.headers.begin(), request.headers.end(),
                     [&](const HTTPHeader& header) { return lowercased(header.name) == lowercased(name); });
}

void requireSendable(const URLRequest& request, const HTTPAddress& address) {
  const bool sendable = isToken(request.method) &&
                        std::all_of(request.headers.begin(), request.headers.end(), [](const HTTPHeader& header) {
                          return isToken(header.name) && isFieldValue(header.value);
                        });
  if (!sendable)
    throw URLError(URLError::Code::badURL,
                   "The request to " + address.host() +
                       " cannot be sent: a key or another header holds a line break or a control character.");
}

}  // namespace

void CurlTransfer::Release::operator()(void* handle) const {
  curl_easy_cleanup(handle);
}

void CurlTransfer::Release::operator()(curl_slist* list) const {
  curl_slist_free_all(list);
}

CurlTransfer::CurlTransfer(const URLRequest& request, HTTPAddress address, const CurlOptions& options)
    : address_(std::move(address)), requestBody_(request.body), handle_(curl_easy_init()) {
  if (!handle_) throw std::bad_alloc();
  requireSendable(request, address_);
  configure(options);
  configureRequest(request);
}

void CurlTransfer::configure(const CurlOptions& options) {
  void* const handle = handle_.get();
  set(handle, CURLOPT_URL, address_.url().c_str());
  set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  set(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  set(handle, CURLOPT_HTTP09_ALLOWED, 0L);
  set(handle, CURLOPT_FOLLOWLOCATION, 0L);
  set(handle, CURLOPT_PROXY, "");
  set(handle, CURLOPT_CONNECTTIMEOUT, longestConnect);
  set(handle, CURLOPT_TCP_KEEPALIVE, 1L);

  set(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  set(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  set(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (!options.certificateAuthorities.empty()) set(handle, CURLOPT_CAINFO, options.certificateAuthorities.c_str());

  // A name lookup that hangs is left to its own thread instead of being waited for.
  set(handle, CURLOPT_NOSIGNAL, 1L);
  set(handle, CURLOPT_QUICK_EXIT, 1L);
  for (const std::string& entry : options.addresses)
    append(addresses_, entry);
  set(handle, CURLOPT_RESOLVE, addresses_.get());

  set(handle, CURLOPT_HEADERFUNCTION, &CurlTransfer::receiveHeader);
  set(handle, CURLOPT_HEADERDATA, static_cast<void*>(this));
  set(handle, CURLOPT_WRITEFUNCTION, &CurlTransfer::receiveBody);
  set(handle, CURLOPT_WRITEDATA, static_cast<void*>(this));
}

void CurlTransfer::configureRequest(const URLRequest& request) {
  void* const handle = handle_.get();
  if (requestBody_ || request.method == "POST") {
    const std::string_view body = requestBody_ ? std::string_view(*requestBody_) : std::string_view("");
    set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    set(handle, CURLOPT_POSTFIELDS, body.data());
  }
  if (request.method == "HEAD") set(handle, CURLOPT_NOBODY, 1L);
  set(handle, CURLOPT_CUSTOMREQUEST, request.method.c_str());

  // A header without a value takes away what libcurl would send of its own; one that is to be sent empty ends in a
  // semicolon. No answer is asked for compressed: a cut one could not be told from a whole one.
  append(headers_, "Expect:");
  if (!hasHeader(request, "Content-Type")) append(headers_, "Content-Type:");
  if (!hasHeader(request, "Accept-Encoding")) append(headers_, "Accept-Encoding: identity");
  for (const HTTPHeader& header : request.headers)
    append(headers_, trimmed(header.value).empty() ? header.name + ";" : header.name + ": " + header.value);
  set(handle, CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::append(List& list, const std::string& line) {
  curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
  if (!longer) throw std::bad_alloc();
  static_cast<void>(list.release());
  list.reset(longer);
}

std::size_t CurlTransfer::receiveHeader(char* data, std::size_t size, std::size_t count, void* transfer) {
  const std::string_view line(data, size * count);
  auto& self = *static_cast<CurlTransfer*>(transfer);
  if (line.starts_with("HTTP/"))
    self.headComplete_ = false;
  else if (line == "\r\n" || line == "\n")
    self.headComplete_ = true;
  return line.size();
}

std::size_t CurlTransfer::receiveBody(char* data, std::size_t size, std::size_t count, void* transfer) {
  auto& self = *static_cast<CurlTransfer*>(transfer);
  Bytes& body = self.body_;
  try {
    if (body.empty()) {
      const auto told = get<curl_off_t>(self.handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);  // -1: it is not told
      body.reserve(static_cast<std::size_t>(std::clamp(told, curl_off_t{0}, mostRoom)));
    }
    body.insert(body.end(), data, data + size * count);
    return size * count;
  } catch (const std::exception&) {
    return 0;  // no memory: libcurl gives the transfer up
  }
}

void CurlTransfer::finish(std::optional<int> code) {
  std::lock_guard lock(mutex_);
  code_ = code;
  ended_ = true;
  changed_.notify_all();
}

void CurlTransfer::wait(std::optional<std::chrono::steady_clock::time_point> end, const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  const auto ended = [this] { return ended_; };
  if (end ? changed_.wait_until(lock, stop, *end, ended) : changed_.wait(lock, stop, ended)) return;
  throw failure(stop.stop_requested() ? URLError::Code::cancelled : URLError::Code::timedOut, address_);
}

int CurlTransfer::status() const {
  return static_cast<int>(get<long>(handle_.get(), CURLINFO_RESPONSE_CODE));
}

void CurlTransfer::throwIfFailed() const {
  if (!code_) throw failure(URLError::Code::cancelled, address_);
  if (*code_ != CURLE_OK) throw failureOf(*code_, handle_.get(), address_);
  // libcurl takes a head that breaks off for a whole one, and "101 Switching Protocols" for an answer.
  if (!headComplete_) throw failure(URLError::Code::networkConnectionLost, address_);
  if (status() < 200) throw failure(URLError::Code::badServerResponse, address_);
  curl_header* encoding = nullptr;
  if (curl_easy_header(handle_.get(), "Content-Encoding", 0, CURLH_HEADER, -1, &encoding) == CURLHE_OK &&
      lowercased(encoding->value) != "identity")
    throw failure(URLError::Code::badServerResponse, address_, "it is compressed, which was not asked for");
}

std::optional<HTTPAddress> CurlTransfer::redirect() const {
  const auto* const target = get<const char*>(handle_.get(), CURLINFO_REDIRECT_URL);
  return target ? address_.redirected(target) : std::nullopt;
}

}  // namespace tq
