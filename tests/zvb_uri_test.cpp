/// URIs of work tables: read, built, and the one form of their text.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>
#include <string>

#include "ZvwtHandles.h"

namespace {

using ReadHandle = zvwt::Uri;
using BuiltHandle = zvwt::TableUri;

ReadHandle read(const std::string& text) { return ReadHandle(getURIFromURIString(text.c_str())); }

/// Builds a URI from all that another one says.
std::string rebuilt(const ZvURI& uri) {
  std::int64_t first = 0;
  std::int64_t count = 0;
  const BuiltHandle built(uri.getRowRange(&first, &count)
                              ? getWorkTableURIFromComponents(uri.getPath(), first, count)
                              : getWorkTableURIFromComponents(uri.getPath()));
  for (int i = 0; i < uri.getColumnCount(); ++i) {
    ZvbString name;
    ZvbString second;
    ZvbString error;
    std::int32_t type = 0;
    EXPECT_TRUE(uri.getColumn(i, &name, &second, &type));
    EXPECT_TRUE(built->appendColumn(name, second, type, &error)) << error.asCstr();
  }
  return built->toString().asCstr();
}

TEST(Uri, IsReadPieceByPiece) {
  const ReadHandle uri = read("zvwt:zvwt_ab12?rows=5,-1&col=b&col=x,a%2c&col=k,42,2&col=n,,3");
  ASSERT_NE(nullptr, uri);
  EXPECT_STREQ("zvwt", uri->getScheme().asCstr());
  EXPECT_STREQ("zvwt_ab12", uri->getPath().asCstr());
  std::int64_t first = 0;
  std::int64_t count = 0;
  EXPECT_TRUE(uri->getRowRange(&first, &count));
  EXPECT_EQ(5, first);
  EXPECT_EQ(-1, count);
  EXPECT_EQ(4, uri->getColumnCount());
  ZvbString name;
  ZvbString second;
  std::int32_t type = 0;
  EXPECT_TRUE(uri->getColumn(1, &name, &second, &type));
  EXPECT_STREQ("a,", second.asCstr());
  EXPECT_TRUE(uri->getColumn(3, &name, &second, &type));
  EXPECT_STREQ("n", name.asCstr());
  EXPECT_STREQ("", second.asCstr());
  EXPECT_EQ(3, type);
  EXPECT_FALSE(uri->getColumn(4, &name, &second, &type));
  EXPECT_FALSE(uri->getColumn(-1, &name, &second, &type));
}

TEST(Uri, HasOneFormOfText) {
  const std::string most = std::to_string(std::numeric_limits<std::int64_t>::max());
  const std::pair<std::string, std::string> texts[] = {
      {"zvwt:t", "zvwt:t"},
      {"ZVWT:%74?col=a,,0", "zvwt:t?col=a"},
      {"zvwt:t?col=a&rows=-3,007", "zvwt:t?rows=-3,7&col=a"},
      {"zvwt:t?rows=" + most + "," + most, "zvwt:t?rows=" + most + "," + most},
      {"zvwt:a b?col=x=y&col=what?&col=", "zvwt:a%20b?col=x%3Dy&col=what%3F&col="},
      {"zvwt:t?col=Gr\u00F6%c3%9f&col=a%2f,-._~,-4", "zvwt:t?col=Gr%C3%B6%C3%9F&col=a%2F,-._~,-4"},
  };
  for (const auto& [text, form] : texts) {
    const ReadHandle uri = read(text);
    ASSERT_NE(nullptr, uri) << text;
    EXPECT_EQ(form, rebuilt(*uri));
    EXPECT_EQ(form, rebuilt(*read(form)));
  }
  EXPECT_EQ(nullptr, getWorkTableURIFromComponents(ZvbString()));
}

TEST(Uri, IsNotEveryTextWithAColon) {
  for (const char* text : {"",
                           ":",
                           "t",
                           "C:\\x",
                           "1a:x",
                           "a b:x",
                           "zvwt",
                           "zvwt:t%",
                           "zvwt:t%4",
                           "zvwt:t%4g",
                           "zvwt:t%00",
                           "zvwt:t%-1",
                           "zvwt:t&col=a",
                           "zvwt:t?",
                           "zvwt:t?col=a&",
                           "zvwt:t?column=a",
                           "zvwt:t?COL=a",
                           "zvwt:t?rows=1",
                           "zvwt:t?rows=1,",
                           "zvwt:t?rows=1,2,3",
                           "zvwt:t?rows=1, 2",
                           "zvwt:t?rows=1,2&rows=1,2",
                           "zvwt:t?rows=9223372036854775808,1",
                           "zvwt:t?col=a,b,",
                           "zvwt:t?col=a,b,x",
                           "zvwt:t?col=a,b,2,",
                           "zvwt:t?col=a,b,2147483648"}) {
    EXPECT_EQ(nullptr, read(text)) << text;
  }
  const ReadHandle other = read("x+1.-:any ?%thing&");
  ASSERT_NE(nullptr, other);
  EXPECT_STREQ("x+1.-", other->getScheme().asCstr());
  EXPECT_STREQ("any ?%thing&", other->getPath().asCstr());
  EXPECT_EQ(0, other->getColumnCount());
}

TEST(Uri, KeepsEveryByteOfATextAndManyColumns) {
  std::mt19937 random(7);
  std::vector<std::string> names;
  const BuiltHandle built(getWorkTableURIFromComponents("t"));
  ZvbString error;
  for (int i = 0; i < 500; ++i) {
    std::string name;
    for (std::size_t left = random() % 300; left > 0; --left) {
      name += static_cast<char>(1 + random() % 255);
    }
    ASSERT_TRUE(built->appendColumn(name.c_str(), ZvbString(), 0, &error));
    names.push_back(name);
  }
  const ReadHandle uri = read(built->toString().asCstr());
  ASSERT_NE(nullptr, uri);
  for (int i = 0; i < 500; ++i) {
    ZvbString name;
    ZvbString second;
    std::int32_t type = 0;
    ASSERT_TRUE(uri->getColumn(i, &name, &second, &type));
    ASSERT_EQ(names[static_cast<std::size_t>(i)], name.asCstr());
  }
}

}  // namespace
