#include <gtest/gtest.h>

#include "TQPlatform/Digest.hpp"

namespace tq::test {
namespace {

// The expected digests are the published examples of FIPS 180-4.

TEST(SHA256, OfNoBytes) {
  EXPECT_EQ(SHA256().finishHex(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(SHA256, OfAShortText) {
  SHA256 digest;
  digest.update(viewOf("abc"));
  EXPECT_EQ(digest.finishHex(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(SHA256, PiecesCountAsOne) {
  SHA256 digest;
  digest.update(viewOf("abcdbcdecdefdefgefghfghighij"));
  digest.update({});
  digest.update(viewOf("hijkijkljklmklmnlmnomnopnopq"));
  EXPECT_EQ(digest.finishHex(), "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(SHA256, OfAMillionLetters) {
  SHA256 digest;
  const std::string piece(1000, 'a');
  for (int round = 0; round < 1000; ++round)
    digest.update(viewOf(piece));
  EXPECT_EQ(digest.finishHex(), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
}  // namespace tq::test
