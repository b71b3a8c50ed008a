// The texts of the threading variables against the settings they must give, including the
// digit-only rule, the 255-character bound, the dynamic word and the domain-list grammar.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <ostream>
#include <string>

#include "service/threads/env_parsing.hpp"

namespace {

using namespace tav::service;

struct number_case {
  const char* text;
  int thread_count;  // TAV_NUM_THREADS / OMP_NUM_THREADS
  int stripes;
  int processes;     // TAV_MPI_PPN and the launchers
  int mpi_level;
};

std::ostream& operator<<(std::ostream& os, const number_case& c) { return os << c.text; }

class NumberRules : public testing::TestWithParam<number_case> {};

TEST_P(NumberRules, EachVariableReadsItsWay) {
  const number_case& c = GetParam();
  EXPECT_EQ(thread_count_value(c.text), c.thread_count);
  EXPECT_EQ(stripes_value(c.text), c.stripes);
  EXPECT_EQ(processes_per_node_value(c.text), c.processes);
  EXPECT_EQ(mpi_thread_level_value(c.text), c.mpi_level);
}

INSTANTIATE_TEST_SUITE_P(
    Threads, NumberRules,
    testing::Values(number_case{"4", 4, 4, 4, 0}, number_case{"3", 3, 3, 3, 3},
                    number_case{"1", 1, 1, 1, 1}, number_case{"0", unset, 0, unset, 0},
                    number_case{"007", 7, 7, 7, 0}, number_case{"4x", 1, unset, unset, 0},
                    number_case{" 4", 1, unset, unset, 0}, number_case{"-2", 1, unset, unset, 0},
                    number_case{"+2", 1, unset, unset, 0},
                    number_case{"", unset, unset, unset, unset},
                    number_case{"99999999999", INT_MAX, INT_MAX, INT_MAX, 0}));

TEST(ThreadsEnvBound, OnlyThe255FirstCharactersCount) {
  std::string zeros(255, '0');
  EXPECT_EQ(bounded_value((zeros + "x").c_str()), zeros);
  EXPECT_EQ(thread_count_value(bounded_value((zeros + "x").c_str())), unset);
  EXPECT_EQ(thread_count_value(bounded_value((zeros.substr(1) + "x").c_str())), 1);
  EXPECT_EQ(bounded_value(nullptr), "");
}

struct word_case {
  const char* text;
  int dynamic;
};

std::ostream& operator<<(std::ostream& os, const word_case& c) { return os << c.text; }

class DynamicWord : public testing::TestWithParam<word_case> {};

TEST_P(DynamicWord, OnlyFalseInTwoSpellingsTurnsItOff) {
  EXPECT_EQ(dynamic_value(GetParam().text), GetParam().dynamic) << '[' << GetParam().text << ']';
}

INSTANTIATE_TEST_SUITE_P(
    Threads, DynamicWord,
    testing::Values(word_case{"FALSE", 0}, word_case{"false", 0}, word_case{"  false", 0},
                    word_case{"'false'", 0}, word_case{"\" 'FALSE\"", 0},
                    word_case{"false now", 0}, word_case{"False", 1}, word_case{"fALSE", 1},
                    word_case{"falsey", 1}, word_case{"false,", 1}, word_case{"0", 1},
                    word_case{"no", 1}, word_case{"", 1}, word_case{"  ", 1},
                    word_case{"TRUE", 1}));

struct list_case {
  const char* text;
  std::array<int, 5> values;  // all, BLAS, FFT, VML, PARDISO
};

std::ostream& operator<<(std::ostream& os, const list_case& c) { return os << c.text; }

class DomainList : public testing::TestWithParam<list_case> {};

TEST_P(DomainList, ItemsGiveTheFirstValuePerDomain) {
  EXPECT_EQ(domain_list_values(GetParam().text), GetParam().values) << GetParam().text;
}

constexpr int u = unset;

INSTANTIATE_TEST_SUITE_P(
    Threads, DomainList,
    testing::Values(
        list_case{"TAV_DOMAIN_ALL=2, TAV_DOMAIN_BLAS=4", {2, 4, u, u, u}},
        // Every separator, and blanks or "=" between name and value.
        list_case{"TAV_DOMAIN_FFT 5;TAV_DOMAIN_VML = 6:'TAV_DOMAIN_PARDISO==7'", {u, u, 5, 6, 7}},
        list_case{"\"TAV_DOMAIN_BLAS=3\",TAV_DOMAIN_ALL  8", {8, 3, u, u, u}},
        // Empty and non-digit values count as 1; so does a name at the very end.
        list_case{"TAV_DOMAIN_BLAS=,TAV_DOMAIN_FFT=x2 TAV_DOMAIN_VML", {u, 1, 1, 1, u}},
        list_case{"TAV_DOMAIN_ALL=2x", {1, u, u, u, u}},
        // A separator ends the item, so the value after it belongs to no name.
        list_case{"TAV_DOMAIN_BLAS:4", {u, 1, u, u, u}},
        // First of two items wins; a 0 is not stored and leaves room for a later item.
        list_case{"TAV_DOMAIN_BLAS=4,TAV_DOMAIN_BLAS=5", {u, 4, u, u, u}},
        list_case{"TAV_DOMAIN_BLAS=0 TAV_DOMAIN_BLAS=5", {u, 5, u, u, u}},
        // Unknown names, other spellings and stray text are skipped with their values.
        list_case{"TAV_DOMAIN_LAPACK=9,tav_domain_fft=8,TAV_DOMAIN_BLAS=4", {u, 4, u, u, u}},
        list_case{"TAV_DOMAIN_BLASX=3 =5 TAV_DOMAIN_PARDISO=2", {u, u, u, u, 2}},
        list_case{"", {u, u, u, u, u}}, list_case{" ,;:'\"", {u, u, u, u, u}}));

}  // namespace
