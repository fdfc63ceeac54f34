#include "Support/TestCertificates.hpp"

#include <algorithm>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace tq::test {

namespace {

template <auto release>
struct Release {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};

using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Release<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>>;
using Memory = std::unique_ptr<BIO, Release<BIO_free>>;

constexpr long day = 24 * 60 * 60;

void require(bool fine) {
  if (!fine) throw std::runtime_error("no test certificate could be made");
}

Key makeKey() {
  Key key(EVP_EC_gen("P-256"));
  require(key != nullptr);
  return key;
}

void addExtension(X509& certificate, X509& issuer, int identifier, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
  const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, identifier, value.c_str()));
  require(extension && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

/// Unsigned, good from a day before `end` until then; `end` in seconds from now.
Certificate makeCertificate(EVP_PKEY& key, const std::string& name, long serial, long end) {
  Certificate certificate(X509_new());
  require(certificate != nullptr);
  X509* const x509 = certificate.get();
  X509_set_version(x509, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(x509), serial);
  X509_gmtime_adj(X509_getm_notBefore(x509), end - 2 * day);
  X509_gmtime_adj(X509_getm_notAfter(x509), end);
  X509_set_pubkey(x509, &key);
  require(X509_NAME_add_entry_by_txt(X509_get_subject_name(x509), "CN", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0) == 1);
  return certificate;
}

/// The text of an extension "subject alternative name".
std::string alternativeNames(const std::vector<std::string>& hosts) {
  std::string names;
  for (const std::string& host : hosts) {
    const bool isAddress = host.find_first_not_of("0123456789.") == std::string::npos || host.find(':') != host.npos;
    names += (names.empty() ? "" : ",") + std::string(isAddress ? "IP:" : "DNS:") + host;
  }
  return names;
}

template <class Write>
std::string pem(Write write) {
  const Memory memory(BIO_new(BIO_s_mem()));
  require(memory && write(memory.get()) == 1);
  char* data = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

std::string pemOf(X509& certificate) {
  return pem([&](BIO* memory) { return PEM_write_bio_X509(memory, &certificate); });
}

/// Signed by the issuer; null: by itself.
ServerIdentity makeIdentity(const std::vector<std::string>& hosts, long end, X509* issuer, EVP_PKEY* issuerKey) {
  const Key key = makeKey();
  const Certificate certificate = makeCertificate(*key, "Server", 2, end);
  X509* const signer = issuer ? issuer : certificate.get();
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
  addExtension(*certificate, *signer, NID_subject_alt_name, alternativeNames(hosts));
  require(X509_sign(certificate.get(), issuerKey ? issuerKey : key.get(), EVP_sha256()) > 0);
  return {pemOf(*certificate), pem([&](BIO* memory) {
            return PEM_write_bio_PrivateKey(memory, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
          })};
}

}  // namespace

struct TestAuthority::Material {
  explicit Material(const std::string& name) : key(makeKey()), certificate(makeCertificate(*key, name, 1, day)) {}

  Key key;
  Certificate certificate;
};

TestAuthority::TestAuthority(const std::string& name) : material_(std::make_unique<Material>(name)) {
  X509& certificate = *material_->certificate;
  X509_set_issuer_name(&certificate, X509_get_subject_name(&certificate));
  addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign");
  addExtension(certificate, certificate, NID_subject_key_identifier, "hash");
  require(X509_sign(&certificate, material_->key.get(), EVP_sha256()) > 0);
  folder_.write("authority.pem", pemOf(certificate));
}

TestAuthority::~TestAuthority() = default;

ServerIdentity TestAuthority::issue(const std::vector<std::string>& hosts) const {
  return makeIdentity(hosts, day, material_->certificate.get(), material_->key.get());
}

ServerIdentity TestAuthority::issueExpired(const std::vector<std::string>& hosts) const {
  return makeIdentity(hosts, -day, material_->certificate.get(), material_->key.get());
}

ServerIdentity TestAuthority::selfSigned(const std::vector<std::string>& hosts) {
  return makeIdentity(hosts, day, nullptr, nullptr);
}

}  // namespace tq::test
