// Message texts, the printer, the handler slot, the xerbla chain, the catalog file and the load
// of the library, checked byte for byte on what child processes print.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <tav/tav_error.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "child_process.hpp"

namespace {

using tav::test::run_child;
using tav::test::scenario_args;

const std::string parameter_3 =
    "\nOrvat TAV ERROR: Parameter 3 was incorrect on entry to DGEMM .\n";

// Handlers that log their calls, and names for the handlers the slot can hand back.
void first_handler(const char* name, const int* info, int length) {
  std::printf("first %.*s %d %d\n", length, name, *info, length);
}
void second_handler(const char* name, const int* info, int length) {
  std::printf("second %.*s %d %d\n", length, name, *info, length);
}
const char* handler_name(tav_xerbla_handler handler) {
  if (handler == first_handler) return "first";
  if (handler == second_handler) return "second";
  if (handler == tav_serv_default_xerbla) return "default";
  if (handler == cdecl_xerbla) return "cdecl_xerbla";
  return "other";
}
// Installs `handler` and logs the one it replaced.
void install(tav_xerbla_handler handler) {
  std::printf("previous %s\n", handler_name(tav_serv_set_xerbla(handler)));
}

// args: entry, name ("<null>" for a null pointer), name length, info ("<null>" likewise).
TAV_SCENARIO(report_through_entry) {
  const auto& a = scenario_args();
  const char* name = a[1] == "<null>" ? nullptr : a[1].c_str();
  int info = a[3] == "<null>" ? 0 : std::stoi(a[3]);
  const int* info_pointer = a[3] == "<null>" ? nullptr : &info;
  auto entry = a[0] == "default" ? tav_serv_default_xerbla
               : a[0] == "serv"  ? tav_serv_xerbla
                                 : cdecl_xerbla;
  entry(name, info_pointer, std::stoi(a[2]));
}

struct report_case {
  const char* label;
  std::string name, length, info, expected;
};

const std::string twenty = "ABCDEFGHIJKLMNOPQRST";
const report_case report_cases[] = {
    {"bad_parameter", "DGEMM ", "6", "3", parameter_3},
    {"condition", "NAME", "4", "-4",
     "\nOrvat TAV INTERNAL ERROR: Condition 4 detected in function NAME.\n"},
    {"condition_zero", "NAME", "4", "0",
     "\nOrvat TAV INTERNAL ERROR: Condition 0 detected in function NAME.\n"},
    {"condition_int_min", "NAME", "4", "-2147483648",
     "\nOrvat TAV INTERNAL ERROR: Condition -2147483648 detected in function NAME.\n"},
    {"workspace", "DGETRI", "6", "1000",
     "\nOrvat TAV INTERNAL ERROR: Insufficient workspace available in function DGETRI.\n"},
    {"incompatible", "DGETRI", "6", "1001",
     "\nOrvat TAV ERROR: Incompatible optional parameters on entry to DGETRI.\n"},
    {"work_memory", "vdAdd", "5", "1089",
     "\nOrvat TAV INTERNAL ERROR: Not enough work memory in function vdAdd\n"},
    {"coprocessor", "X", "1", "1212",
     "\nOrvat TAV INTERNAL ERROR: Issue accessing coprocessor X.\n"},
    {"other_reserved_looking", "X", "1", "1002",
     "\nOrvat TAV ERROR: Parameter 1002 was incorrect on entry to X.\n"},
    {"cut_at_20", twenty + "UVWXY", "25", "5",
     "\nOrvat TAV ERROR: Parameter 5 was incorrect on entry to " + twenty + ".\n"},
    {"exactly_20", twenty, "20", "5",
     "\nOrvat TAV ERROR: Parameter 5 was incorrect on entry to " + twenty + ".\n"},
    {"unterminated", "DGEMMXYZ", "5", "2",
     "\nOrvat TAV ERROR: Parameter 2 was incorrect on entry to DGEMM.\n"},
    {"zero_length", "DGEMM", "0", "2",
     "\nOrvat TAV ERROR: Parameter 2 was incorrect on entry to .\n"},
    {"negative_length", "DGEMM", "-1", "2", ""},
    {"null_name", "<null>", "5", "2", ""},
    {"null_info", "DGEMM", "5", "<null>", ""},
};

class Reports : public testing::TestWithParam<std::tuple<const char*, report_case>> {};

// With no handler installed, the default handler, tav_serv_xerbla and the chain print alike.
TEST_P(Reports, PrintExactly) {
  const auto& [entry, c] = GetParam();
  auto r = run_child("report_through_entry", {}, {entry, c.name, c.length, c.info});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, c.expected);
  EXPECT_EQ(r.err, "");
}

INSTANTIATE_TEST_SUITE_P(Messages, Reports,
                         testing::Combine(testing::Values("default", "serv", "chain"),
                                          testing::ValuesIn(report_cases)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param)) + "_" +
                                  std::get<1>(info.param).label;
                         });

// args: destination, number. The argument 7 fills the %d of the messages used here.
TAV_SCENARIO(print_message) {
  const auto& a = scenario_args();
  if (tav_serv_print(std::stoi(a[0]), std::stoi(a[1]), 1, 7) != 0) std::exit(3);
}

struct print_case {
  int destination, number;
  std::string out, err;
};

class Destinations : public testing::TestWithParam<print_case> {};

TEST_P(Destinations, StreamAndSingleNewline) {
  const print_case& c = GetParam();
  auto r =
      run_child("print_message", {}, {std::to_string(c.destination), std::to_string(c.number)});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, c.out);
  EXPECT_EQ(r.err, c.err);
}

const std::string warning_4 = "Orvat TAV WARNING: CPU type 7 is not suitable for this processor.\n";
INSTANTIATE_TEST_SUITE_P(
    Messages, Destinations,
    testing::Values(print_case{1, 4, "", warning_4}, print_case{0, 4, warning_4, ""},
                    print_case{2, 4, warning_4, ""}, print_case{-1, 4, warning_4, ""},
                    print_case{1, 0, "", "\n"}, print_case{0, 0, "\n", ""},
                    print_case{0, 1213, "Orvat TAV ERROR: CPU 7 is not supported.\n", ""},
                    print_case{1, 1207, "",
                               "Conditional numerical reproducibility mode is turned ON\n"}));

// args: message numbers; prints each unformatted text on a line of its own.
TAV_SCENARIO(raw_texts) {
  for (const std::string& number : scenario_args())
    std::printf("%s\n", tav_serv_get_msg(std::stoi(number), 0));
}

TEST(Messages, TableTextsByteForByte) {
  const std::pair<int, const char*> rows[] = {
      {0, ""},
      {1, "Orvat TAV FATAL ERROR: Cannot load %s."},
      {2, "Orvat TAV FATAL ERROR: Cannot load %s or %s."},
      {3, "Orvat TAV FATAL ERROR: Error on loading function %s."},
      {4, "Orvat TAV WARNING: CPU type %d is not suitable for this processor."},
      {5, ""},
      {6, "Orvat TAV ERROR: Parameter %d was incorrect on entry to %s."},
      {7, "Orvat TAV INTERNAL ERROR: Condition %d detected in function %s."},
      {8, "Orvat TAV INTERNAL ERROR: Insufficient workspace available in function %s."},
      {9, "Orvat TAV ERROR: Incompatible optional parameters on entry to %s."},
      {1089, "Orvat TAV INTERNAL ERROR: Not enough work memory in function %s"},
      {1207, "Conditional numerical reproducibility mode is turned ON"},
      {1208, "Conditional numerical reproducibility mode is turned OFF"},
      {1209,
       "Orvat TAV WARNING: incorrect conditional numerical reproducibility mode, "
       "TAV_CBWR_AUTO is set"},
      {1210,
       "Orvat TAV FATAL ERROR: This system does not meet the minimum requirements for use "
       "of the Orvat(R) Numerikon Library."},
      {1211,
       "The processor must support the Orvat(R) Streaming SIMD 2 Extensions (Orvat(R) "
       "SSE2) instructions."},
      {1212, "Orvat TAV INTERNAL ERROR: Issue accessing coprocessor %s."},
      {1213, "Orvat TAV ERROR: CPU %d is not supported."},
  };
  std::vector<std::string> numbers;
  std::string expected;
  for (const auto& [number, text] : rows) {
    numbers.push_back(std::to_string(number));
    expected += std::string(text) + "\n";
  }
  auto r = run_child("raw_texts", {}, numbers);
  EXPECT_EQ(r.out, expected);
}

// args: length of the routine name given to message 1 (35 + length + 1 characters formatted).
TAV_SCENARIO(print_long_argument) {
  std::string name(std::stoul(scenario_args()[0]), 'x');
  tav_serv_print(0, 1, 1, name.c_str());
}

class Overflow : public testing::TestWithParam<int> {};

// The text is cut to the 511 characters the buffer holds; the overflow report appears only
// when the formatted length minus one exceeds 512.
TEST_P(Overflow, CutAndReported) {
  int name_length = GetParam();
  std::string full = "Orvat TAV FATAL ERROR: Cannot load " + std::string(name_length, 'x') + ".";
  std::string expected;
  if (full.size() > 513)
    expected = "\nTAV INTERNAL ERROR: message buffer overflow.\n       Lenght: " +
               std::to_string(full.size()) + "   Buffer size: 512\n";
  expected += full.substr(0, 511) + "\n";
  auto r = run_child("print_long_argument", {}, {std::to_string(name_length)});
  EXPECT_EQ(r.out, expected);
}

INSTANTIATE_TEST_SUITE_P(Messages, Overflow, testing::Values(400, 475, 476, 477, 478, 600));

TAV_SCENARIO(get_msg_buffer) {
  char* first = tav_serv_get_msg(6, 2, 3, "DGEMM");
  std::printf("[%s]\n", first);
  std::printf("[%s][%s]\n", tav_serv_get_msg(0, 0), tav_serv_get_msg(0, 1, 5));
  char* second = tav_serv_get_msg(1213, 1, 9);
  std::printf("[%s] %s\n", first, first == second ? "same" : "other");
  std::printf("%zu\n", std::strlen(tav_serv_get_msg(1, 1, std::string(600, 'x').c_str())));
}

TEST(Messages, GetMsgFormatsIntoOneBuffer) {
  auto r = run_child("get_msg_buffer");
  EXPECT_EQ(r.out,
            "[Orvat TAV ERROR: Parameter 3 was incorrect on entry to DGEMM.]\n"
            "[][]\n"
            "[Orvat TAV ERROR: CPU 9 is not supported.] same\n"
            "511\n");
}

TAV_SCENARIO(handler_slot) {
  int info = 3;
  install(first_handler);
  install(second_handler);
  tav_serv_xerbla("DGEMM", &info, 5);
  tav_serv_xerbla(nullptr, &info, 5);
  tav_serv_xerbla("DGEMM", nullptr, 5);
  tav_serv_set_xerbla_interface(first_handler);  // occupied: no change
  tav_serv_xerbla("DTRSM", &info, 5);
  install(nullptr);
  tav_serv_xerbla("DGEMM ", &info, 6);  // empty again: the default handler prints
  install(nullptr);
  tav_serv_set_xerbla_interface(first_handler);  // empty: installs
  tav_serv_xerbla("DGEMM", &info, 5);
  install(nullptr);
}

TEST(Handlers, SlotSemantics) {
  auto r = run_child("handler_slot");
  EXPECT_EQ(r.out,
            "previous default\nprevious first\nsecond DGEMM 3 5\nsecond DTRSM 3 5\n"
            "previous second\n" +
                parameter_3 + "previous default\nfirst DGEMM 3 5\nprevious first\n");
}

TAV_SCENARIO(cblas_reports) {
  cblas_xerbla("cblas_dgemm", 4);
  install(first_handler);  // cblas_xerbla installed cdecl_xerbla in the empty slot
  cblas_xerbla("cblas_zgemm3m_batch_strided", 2);
  cblas_xerbla_malloc_error("cblas_sgemm");
  cblas_xerbla(nullptr, 3);
  install(nullptr);  // the application's handler kept its slot and was never called
}

TEST(Handlers, CblasBypassesInstalledHandler) {
  auto r = run_child("cblas_reports");
  EXPECT_EQ(r.out,
            "\nOrvat TAV ERROR: Parameter 4 was incorrect on entry to cblas_dgemm.\n"
            "previous cdecl_xerbla\n"
            "\nOrvat TAV ERROR: Parameter 2 was incorrect on entry to cblas_zgemm3m_batch_.\n"
            "\nOrvat TAV INTERNAL ERROR: Insufficient workspace available in function "
            "cblas_sgemm.\n"
            "previous first\n");
}

TAV_SCENARIO(check_pointers) {
  int x = 0;
  std::printf("%d %d %d\n", tav_serv_check_ptr(&x, "vdAdd"), tav_serv_check_ptr_and_warn(&x, "a"),
              tav_serv_check_ptr_and_warn(nullptr, "a"));
  std::printf("%d\n", tav_serv_check_ptr(nullptr, "vdAdd"));
  std::printf("%d\n", tav_serv_check_ptr(nullptr, nullptr));
  tav_serv_set_xerbla(first_handler);
  std::printf("%d\n", tav_serv_check_ptr(nullptr, "vdMul"));
}

TEST(Handlers, CheckPointerPair) {
  auto r = run_child("check_pointers");
  EXPECT_EQ(r.out,
            "0 0 1\n\nOrvat TAV INTERNAL ERROR: Not enough work memory in function vdAdd\n1\n"
            "1\nfirst vdMul 1089 5\n1\n");
}

// args: message number to print first. Shows LANG before and after the first lookup.
TAV_SCENARIO(lang_after_message) {
  auto show = [](const char* when) {
    const char* lang = std::getenv("LANG");
    std::printf("%s=%s\n", when, lang ? lang : "(unset)");
  };
  show("before");
  tav_serv_print(0, std::stoi(scenario_args()[0]), 0);
  show("after");
}

struct lang_case {
  const char* label;
  std::string lang, number, after;
};

class Lang : public testing::TestWithParam<lang_case> {};

TEST_P(Lang, CutAtFirstFullStopWhenNoCatalog) {
  const lang_case& c = GetParam();
  auto r = run_child("lang_after_message", {{"LANG", c.lang}, {"NLSPATH", "/nonexistent/%N"}},
                     {c.number});
  std::string text =
      c.number == "0" ? "\n" : "Conditional numerical reproducibility mode is turned ON\n";
  EXPECT_EQ(r.out, "before=" + c.lang + "\n" + text + "after=" + c.after + "\n");
}

const std::string x62(62, 'x'), x63(63, 'x');
INSTANTIATE_TEST_SUITE_P(
    Messages, Lang,
    testing::Values(lang_case{"utf8", "de_DE.UTF-8", "1207", "de_DE"},
                    lang_case{"two_stops", "en_US.ISO-8859-1.x", "1207", "en_US"},
                    lang_case{"no_stop", "C", "1207", "C"},
                    lang_case{"stop_at_62", x62 + ".UTF-8", "1207", x62},
                    lang_case{"stop_beyond_63", x63 + ".UTF-8", "1207", x63 + ".UTF-8"},
                    lang_case{"message_0_needs_no_lookup", "de_DE.UTF-8", "0", "de_DE.UTF-8"}),
    [](const auto& info) { return std::string(info.param.label); });

TAV_SCENARIO(catalog_texts) {
  tav_serv_print(0, 6, 2, 3, "DGEMM");
  tav_serv_print(0, 8, 1, "DGEMM");  // not in the catalog: the built-in text
  const char* lang = std::getenv("LANG");
  std::printf("LANG=%s\n", lang ? lang : "(unset)");
}

struct catalog_case {
  const char* label;
  std::string subdirectory, nlspath, lang, lang_after;  // lang "": unset
};

class Catalog : public testing::TestWithParam<catalog_case> {
 protected:
  void TearDown() override { std::filesystem::remove_all(root_); }
  std::string root_;
};

// A catalog translating message 6 only, in the case's subdirectory of a fresh directory: the
// translated text where the catalog has one, the built-in text elsewhere.
TEST_P(Catalog, ReplacesBuiltInTexts) {
  const catalog_case& c = GetParam();
  char pattern[] = "/tmp/tav_catalog_XXXXXX";
  root_ = mkdtemp(pattern);
  std::filesystem::create_directories(root_ + "/" + c.subdirectory);
  std::ofstream(root_ + "/messages.txt") << "$set 1\n6 Parameter %d falsch in %s.\n";
  const std::string command =
      "gencat " + root_ + "/" + c.subdirectory + "/tav_msg.cat " + root_ + "/messages.txt";
  ASSERT_EQ(std::system(command.c_str()), 0) << "gencat failed";
  tav::test::env_list env{{"NLSPATH", root_ + c.nlspath}};
  if (!c.lang.empty()) env.emplace_back("LANG", c.lang);
  EXPECT_EQ(run_child("catalog_texts", env).out,
            "Parameter 3 falsch in DGEMM.\n"
            "Orvat TAV INTERNAL ERROR: Insufficient workspace available in function DGEMM.\n"
            "LANG=" + c.lang_after + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Messages, Catalog,
    testing::Values(catalog_case{"no_language", ".", "/%N", "", "(unset)"},
                    catalog_case{"language_without_encoding", "de_DE", "/%L/%N", "de_DE.UTF-8",
                                 "de_DE"},
                    catalog_case{"found_at_first_try_keeps_lang", "de_DE.UTF-8", "/%L/%N",
                                 "de_DE.UTF-8", "de_DE.UTF-8"}),
    [](const auto& info) { return std::string(info.param.label); });

// Loads the test binary, and with it the library, again in a directory that no longer exists.
TAV_SCENARIO(exec_in_removed_directory) {
  char pattern[] = "/tmp/tav_removed_XXXXXX";
  if (mkdtemp(pattern) == nullptr || chdir(pattern) != 0 || rmdir(pattern) != 0) std::exit(98);
  execl("/proc/self/exe", "/proc/self/exe", "--tav-child=never_reached", nullptr);
  std::exit(99);
}

TAV_SCENARIO(never_reached) { std::printf("reached main\n"); }

TEST(Startup, RemovedWorkingDirectoryEndsTheProcess) {
  Dl_info library{};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(&tav_serv_print), &library), 0);
  auto r = run_child("exec_in_removed_directory");
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "Orvat TAV FATAL ERROR: Cannot load " + std::string(library.dli_fname) + ".\n");
  EXPECT_EQ(r.err, "");
}

}  // namespace
