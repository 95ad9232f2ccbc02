// Atoms, symbols, texts and names, without an object file in between.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "framework/attributes.h"
#include "framework/class_registration.h"
#include "framework/doc_text.h"
#include "framework/host_path.h"
#include "framework/messages.h"
#include "framework/ports.h"
#include "host/host.h"

using namespace kv7::ply;

TEST(Atoms, AnswerForOtherTypesThanTheirOwn) {
    const std::tuple<atom, std::int64_t, double, const char*> rows[] = {
        {-3, -3, -3.0, ""},
        {-2.9, -2, -2.9, ""},
        {0x1p63, INT64_MIN, 0x1p63, ""},
        {-HUGE_VAL, INT64_MIN, -HUGE_VAL, ""},
        {"name", 0, 0.0, "name"},
        {atom(), 0, 0.0, ""},
    };
    for (const auto& [value, as_long, as_float, as_symbol] : rows) {
        EXPECT_EQ(value.as_long(), as_long);
        EXPECT_EQ(value.as_float(), as_float);
        EXPECT_EQ(value.as_symbol().text(), as_symbol);
        EXPECT_EQ(value.as_object(), nullptr);
    }
    EXPECT_EQ(atom(std::nan("")).as_long(), INT64_MIN);
}

TEST(AtomText, ReadsWhatItWrites) {
    for (const char* text :
         {"1 -2 9223372036854775807", "0.1 1e+300 -0.0 5e-324 3.0", "a \"b c\" \"\" \"12\" \"1.5\"",
          "\"a\\\"b\\\\c\" @attr - . inf nan -inf +a 0x1 1a \"1e999\"", ""})
        EXPECT_EQ(tesk::text_of_atoms(tesk::atoms_of_text(text)), text);
    EXPECT_EQ(tesk::text_of_atoms(tesk::atoms_of_text(" 1\t+2 .5 5. 1e3 \n nan \"3\" ")),
              "1 2 0.5 5.0 1000.0 nan \"3\"");
    for (const char* refused : {"\"a", "a\"", "\"a\"b", "9223372036854775808", "1e999"})
        EXPECT_THROW(tesk::atoms_of_text(refused), std::invalid_argument) << refused;
    EXPECT_THROW(tesk::atoms_of_text(std::string("a\0b", 3)), std::invalid_argument);
}

TEST(Symbols, AreOneForAllThreads) {
    std::vector<std::thread> threads;
    std::vector<std::vector<tesk_symbol*>> found(4);
    for (auto& mine : found)
        threads.emplace_back([&mine] {
            for (int i = 0; i < 500; ++i) mine.push_back(gensym(std::to_string(i).c_str()));
        });
    for (std::thread& thread : threads) thread.join();
    for (const auto& mine : found) EXPECT_EQ(mine, found.front());
    EXPECT_NE(found[0][0], found[0][1]);
}

// The rest of the marking stands in the page of the registration test.
TEST(DocText, MarksUpWholeWordsAndCutsDigests) {
    EXPECT_EQ(doc_format("@ [] [a b]"), "<at></at> <o></o> [a b]");
    EXPECT_EQ(digest_of("One.two"), "One");
    EXPECT_EQ(digest_of("One.two. Three"), "One.two");
    EXPECT_EQ(digest_of(std::string(260, 'x') + ". y"), std::string(256, 'x'));
}

TEST(ObjectName, ComesFromTheSourceFile) {
    EXPECT_EQ(object_name_of("/a/b_tilde.cpp/orv.some_tilde.cpp"), "orv.some~");
    EXPECT_EQ(object_name_of("a\\b\\orv.some_tilde.cpp"), "orv.some~");
    EXPECT_EQ(object_name_of("a/b\\orv.some.cpp"), "b\\orv.some");
    EXPECT_EQ(object_name_of("some_tilde.c"), "some_tilde.c");
}

namespace {

struct bare : object_base {};
struct everywhere : object_base {
    bool any_thread_class() const override { return true; }
    attribute<bool, 0, limit::none, 2> flag{this, "flag", false};
};

}  // namespace

TEST(Prototype, HasNoHostObjectAndMakesDoWithout) {
    tesk::host::the();
    bare owner;
    everywhere free_owner;
    EXPECT_EQ(owner.valid_host_object(), nullptr);
    int inlet_seen = 7;
    const message_function remember = [&](const atoms&, int inlet) {
        inlet_seen = inlet;
        return atoms{1};
    };
    const message<2> replaced{&owner, "here", {}};
    message<2> here{&owner, "here", remember}, empty{&owner, "empty", {}};
    message<0> waits{&owner, "waits", remember}, runs{&free_owner, "runs", remember};
    EXPECT_EQ(owner.messages.find("here"), &here);
    here.call({});
    EXPECT_EQ(inlet_seen, -1) << "stays unknown";
    EXPECT_THROW(empty.call({}), std::bad_function_call);
    std::thread([&] {
        EXPECT_TRUE(waits.call({}).empty());
        EXPECT_EQ(runs.call({}).size(), 1u);
        free_owner.flag.set({atom(5)}, false, false);
    }).join();
    EXPECT_TRUE(free_owner.flag.stored()) << "written on the calling thread";
    EXPECT_EQ(tesk::host::the().serve(), 1);
    outlet<3, 0> out{&owner, "out", "signal"};
    out.create();
    EXPECT_EQ(out.instance, nullptr);
}

TEST(HostPath, ReportsWhatCannotBeMade) {
    testing::internal::CaptureStderr();
    host_path("missing", path_kind::any_file, true);
    host_path("missing", path_kind::folder, true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "can only create folders, not files\nno folder name provided\n");
}
