#include "share/HNRShareParams.h"

#include <gtest/gtest.h>

using HNR::HNRShareParams;

namespace {

// Passwords are compared without printing them.
bool passwordIs(const HNRShareParams& params, const std::string& expected)
{
    return params.password == expected;
}

TEST(HNRShareParamsTest, DefaultIsEmptyAndAnonymous)
{
    HNRShareParams params;
    EXPECT_EQ("", params.path);
    EXPECT_EQ("", params.login);
    EXPECT_TRUE(passwordIs(params, ""));
    EXPECT_TRUE(params.isEmpty());
    EXPECT_TRUE(params.isAnonymous());
}

TEST(HNRShareParamsTest, KeepsFullCredentials)
{
    HNRShareParams params("\\\\srv\\share", "dom\\user", "secret");
    EXPECT_EQ("\\\\srv\\share", params.path);
    EXPECT_EQ("dom\\user", params.login);
    EXPECT_TRUE(passwordIs(params, "secret"));
    EXPECT_FALSE(params.isEmpty());
    EXPECT_FALSE(params.isAnonymous());
}

TEST(HNRShareParamsTest, LoginWithoutPasswordBecomesAnonymous)
{
    HNRShareParams params("\\\\srv\\share", "user", "");
    EXPECT_EQ("\\\\srv\\share", params.path);
    EXPECT_EQ("", params.login);
    EXPECT_TRUE(passwordIs(params, ""));
    EXPECT_TRUE(params.isAnonymous());
}

TEST(HNRShareParamsTest, PasswordWithoutLoginIsDropped)
{
    HNRShareParams params("\\\\srv\\share", "", "secret");
    EXPECT_EQ("", params.login);
    EXPECT_TRUE(passwordIs(params, ""));
    EXPECT_TRUE(params.isAnonymous());
}

TEST(HNRShareParamsTest, ClearEmptiesPathOnly)
{
    HNRShareParams params("\\\\srv\\share", "user", "secret");
    params.clear();
    EXPECT_TRUE(params.isEmpty());
    EXPECT_EQ("user", params.login);
    EXPECT_TRUE(passwordIs(params, "secret"));
    EXPECT_FALSE(params.isAnonymous());
}

TEST(HNRShareParamsTest, CopiesAreIndependentValues)
{
    HNRShareParams original("\\\\srv\\share", "user", "secret");
    HNRShareParams copy = original;
    copy.path = "\\\\other\\share";
    copy.login.clear();
    EXPECT_EQ("\\\\srv\\share", original.path);
    EXPECT_EQ("user", original.login);
    EXPECT_TRUE(passwordIs(copy, "secret"));
    EXPECT_TRUE(copy.isAnonymous()) << "fields are public: a later edit may make a half record";
}

} // namespace
