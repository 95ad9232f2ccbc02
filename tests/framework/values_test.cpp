// Atoms, symbols, texts and names, without an object file in between.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
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
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    struct {
        atom value;
        std::int64_t as_long;
        double as_float;
        const char* as_symbol;
    } const rows[] = {
        {atom(-3), -3, -3.0, ""},
        {atom(2.9), 2, 2.9, ""},
        {atom(-2.9), -2, -2.9, ""},
        {atom(9223372036854775808.0), smallest, 9223372036854775808.0, ""},
        {atom(-9223372036854775808.0), smallest, -9223372036854775808.0, ""},
        {atom(HUGE_VAL), smallest, HUGE_VAL, ""},
        {atom("name"), 0, 0.0, "name"},
        {atom(), 0, 0.0, ""},
    };
    for (const auto& [value, as_long, as_float, as_symbol] : rows) {
        SCOPED_TRACE(as_float);
        EXPECT_EQ(value.as_long(), as_long);
        EXPECT_EQ(value.as_float(), as_float);
        EXPECT_EQ(value.as_symbol().text(), as_symbol);
        EXPECT_EQ(value.as_object(), nullptr);
    }
    EXPECT_EQ(atom(std::nan("")).as_long(), smallest);
    EXPECT_EQ(to_text({}), "");
    EXPECT_TRUE(symbol("never seen before") == symbol(std::string("never seen before")));
    EXPECT_FALSE(symbol("name") == "another never seen before");
    EXPECT_TRUE(symbol() == "");
}

TEST(AtomText, ReadsWhatItWrites) {
    for (const char* text :
         {"1 -2 9223372036854775807", "0.1 1e+300 -0.0 5e-324 3.0", "a \"b c\" \"\" \"12\" \"1.5\"",
          "\"a\\\"b\\\\c\" @attr - . inf nan -inf +a 0x1 1a \"1e999\"", ""})
        EXPECT_EQ(tesk::text_of_atoms(tesk::atoms_of_text(text)), text);
    const auto types = [](const char* text) {
        std::string all;
        for (const tesk_atom& value : tesk::atoms_of_text(text)) all += std::to_string(value.type);
        return all;
    };
    EXPECT_EQ(types(" 1\t+2 .5 5. 1e3 \n nan \"3\" "), "1122233");
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
    EXPECT_EQ(std::set<tesk_symbol*>(found[0].begin(), found[0].end()).size(), 500u);
}

TEST(DocText, MarksUpWholeWords) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"", ""},
        {"@", "<at></at>"},
        {"#go now", "<m>go</m> now"},
        {"[] [a b] [c]", "<o></o> [a b] <o>c</o>"},
        {"[", "["},
        {"& a&b <c>", "&amp; a&b <c>"},
        {"  two  blanks  ", "two  blanks"},
    };
    for (const auto& [text, marked] : rows) EXPECT_EQ(doc_format(text), marked);
    EXPECT_EQ(digest_of("One.two. Three"), "One.two");
    EXPECT_EQ(digest_of("One.two"), "One");
    EXPECT_EQ(digest_of(std::string(300, 'x')), std::string(256, 'x'));
    EXPECT_EQ(digest_of(std::string(260, 'x') + ". y"), std::string(256, 'x'));
}

TEST(ObjectName, ComesFromTheSourceFile) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"/a/b_tilde.cpp/orv.some_tilde.cpp", "orv.some~"},
        {"a\\b\\orv.some_tilde.cpp", "orv.some~"},
        {"a/b\\orv.some.cpp", "b\\orv.some"},
        {"orv.some.cpp", "orv.some"},
        {"some_tilde.c", "some_tilde.c"},
        {"some", "some"},
    };
    for (const auto& [path, name] : rows) EXPECT_EQ(object_name_of(path), name);
}

namespace {

struct bare : object_base {};
struct fingers : object_base {
    std::vector<std::string> class_options() const override { return {"multitouch"}; }
};
struct everywhere : object_base {
    bool any_thread_class() const override { return true; }
    attribute<bool, 0, limit::none, 2> flag{this, "flag", false};
};

}  // namespace

TEST(MessageNames, AreRewrittenWithTheirKinds) {
    bare owner;
    fingers touched;
    const message_function same = [](const atoms& values, int) { return values; };
    const message<2> integer{&owner, "integer", same}, number{&owner, "number", same},
        setup{&owner, "setup", same}, drag{&owner, "mousedrag", same, "", 8},
        down{&touched, "mousedown", same}, touched_drag{&touched, "mousedrag", same, "", 8};
    EXPECT_EQ(owner.messages.find("int")->kind, 1);
    EXPECT_EQ(owner.messages.find("float")->kind, 2);
    EXPECT_EQ(owner.messages.find("setup")->kind, 9);
    EXPECT_EQ(owner.messages.find("mousedrag")->kind, 8);
    EXPECT_EQ(touched.messages.find("mt_mousedown")->kind, 9);
    EXPECT_EQ(touched.messages.find("mousedown"), nullptr);
    message<2> second{&owner, "setup", same};
    EXPECT_EQ(owner.messages.find("setup"), &second);
    EXPECT_EQ(owner.messages.size(), 4u);
}

TEST(Prototype, HasNoHostObjectAndMakesDoWithout) {
    tesk::host::the();
    bare owner;
    everywhere free_owner;
    EXPECT_EQ(owner.valid_host_object(), nullptr);
    int inlet_seen = 7;
    const message_function remember = [&](const atoms&, int inlet) {
        inlet_seen = inlet;
        return atoms{atom(1)};
    };
    message<2> here{&owner, "here", remember}, empty{&owner, "empty", {}};
    message<0> waits{&owner, "waits", remember}, runs{&free_owner, "runs", remember};
    here.call({});
    EXPECT_EQ(inlet_seen, -1) << "stays unknown";
    EXPECT_THROW(empty.call({}), std::bad_function_call);
    std::size_t waiting = 9, running = 9;
    std::thread([&] {
        waiting = waits.call({}).size();
        running = runs.call({}).size();
        free_owner.flag.set({atom(5)}, false, false);
    }).join();
    EXPECT_EQ(to_text(free_owner.flag.get()), "1") << "written on the calling thread";
    EXPECT_EQ(waiting, 0u);
    EXPECT_EQ(running, 1u);
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
