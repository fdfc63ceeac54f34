#include <gtest/gtest.h>

#include "TQVision/ProviderErrorHints.hpp"

namespace tq {
namespace {

const std::string hint =
    "\n\nHint: HTTP 400 from a custom OpenAI-compatible endpoint usually means the model doesn't accept image inputs. "
    "Confirm the model is vision-capable — e.g., for Qwen use 'Qwen2.5-VL' or 'Qwen3-VL' (not the base text-only "
    "Qwen2/Qwen3 models). For Llama use 'llama-3.2-90b-vision', and for LLaVA use 'llava' (Ollama). Text-only models "
    "will reject the image content blocks we send.";

TEST(AnnotateBadRequest, EachOfTheTellingWordsGetsTheHint) {
  for (const std::string body : {"1 validation error for Body", R"({"type":"invalid_request_error"})",
                                 "an invalid request was made", "Unsupported content type 'image_url'"})
    EXPECT_EQ(ProviderErrorHints::annotateBadRequest(400, body), body + hint);
}

TEST(AnnotateBadRequest, CapitalsAreFoundAndKept) {
  EXPECT_EQ(ProviderErrorHints::annotateBadRequest(400, R"({"code":"INVALID_REQUEST"})"),
            R"({"code":"INVALID_REQUEST"})" + hint);
}

TEST(AnnotateBadRequest, SeveralWordsGetOneHint) {
  EXPECT_EQ(ProviderErrorHints::annotateBadRequest(400, "unsupported: validation"), "unsupported: validation" + hint);
}

TEST(AnnotateBadRequest, WithoutATellingWordTheBodyStays) {
  for (const std::string body : {"", "context length exceeded", "invalid-request", "not valid"})
    EXPECT_EQ(ProviderErrorHints::annotateBadRequest(400, body), body);
}

TEST(AnnotateBadRequest, OtherStatusesAreLeftAlone) {
  for (const int status : {200, 401, 404, 422, 429, 500})
    EXPECT_EQ(ProviderErrorHints::annotateBadRequest(status, "invalid_request"), "invalid_request") << status;
}

}  // namespace
}  // namespace tq
