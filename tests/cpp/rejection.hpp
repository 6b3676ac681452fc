#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

// The call must throw std::invalid_argument naming the argument first.
inline void expectRejected(const std::function<void()> &call, const std::string &argument)
{
    try {
        call();
        ADD_FAILURE() << "no exception; expected one about " << argument;
    } catch (const std::invalid_argument &error) {
        EXPECT_EQ(std::string(error.what()).rfind(argument + ": ", 0), 0u) << error.what();
    }
}
