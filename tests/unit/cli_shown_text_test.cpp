// What of other people's texts reaches a terminal.
#include <gtest/gtest.h>

#include "base/ShownText.h"

namespace tesk::cli {
namespace {

TEST(CliShownText, NothingThatATerminalObeysIsLeft) {
  const struct {
    std::string text;
    const char* shown;
  } texts[] = {
      {"Lab 7 \xC3\xA9\xE2\x82\xAC\xF0\x9F\x96\xA8", "Lab 7 \xC3\xA9\xE2\x82\xAC\xF0\x9F\x96\xA8"},
      {std::string("a\0b\x1b[2J\x7F\n", 9), "a?b?[2J??"},
      {"\xC2\x9B\x33\xC2\xA0", "?3\xC2\xA0"},           // the second range, as UTF-8; its upper end
      {"\xC3(\xE2\x82)", "?(?)"},                       // characters that are broken off
      {"\x9B\x33\xE2\x82", "?3?"},                      // as single bytes; half a character
      {"\xC1\x9B\xE0\x82\x9B\xF0\x80\x82\x9B", "???"},  // in forms that are too long
      {"\xED\xA0\x80\xF4\x90\x80\x80\xFFx", "???x"},    // no characters at all
      // Lines' ends and other directions, by both ends of their ranges; their neighbours are shown.
      {"\xE2\x80\x8E\xE2\x80\x8F\xE2\x80\xA8\xE2\x80\xAE\xE2\x81\xA6\xE2\x81\xA9.", "??????."},
      {"\xE2\x80\x8D\xE2\x80\x90\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA",
       "\xE2\x80\x8D\xE2\x80\x90\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA"},
  };
  for (const auto& [text, shown] : texts) EXPECT_EQ(ShownText(text), shown);
}

}  // namespace
}  // namespace tesk::cli
