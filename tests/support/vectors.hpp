#pragma once
#include <gtest/gtest.h>

#include "support/oracle.hpp"
