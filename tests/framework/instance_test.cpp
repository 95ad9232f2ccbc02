// The life of an instance: what it is made from, what reaches it, and what it leaves behind.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/framework/objects.h"

namespace {

template <class Function>
Function* method_of(const tesk::instance& box, const char* name) {
    const tesk_method method = box.method(name);
    EXPECT_NE(method, nullptr) << name;
    return reinterpret_cast<Function*>(method);
}

}  // namespace

TEST(Instance, TakesArgumentsThenSetUpThenTheAttributesOfItsBox) {
    const example_box made("example~ 3 4 5 @gain 0.25 @shape square");
    EXPECT_EQ(made.said(), (lines{"gain 0.5", "steps 0.0", "first 3", "setup 3 4 5", "gain 0.25"}));
    EXPECT_EQ(made.box->get_number("shape"), 1.0);
    EXPECT_EQ(made.box->inlets(), 2);
    EXPECT_EQ(made.box->outlets(), 2);
    EXPECT_EQ(made.box->assist(false, 1), "right in");
    EXPECT_EQ(made.box->assist(true, 0), "sum out");
    EXPECT_EQ(made.box->assist(true, 2, "as it was"), "as it was");
    EXPECT_EQ(made.box->notifications(), lines{"modified"}) << "the default of \"value\"";
}

TEST(Instance, ThatFailsToBeMadeReportsWhyAndLeavesNothing) {
    example_box made;
    made.box.reset();
    const tesk::live_memory before = made.host.live();
    struct {
        const char* text;
        double rate;
        const char* error;
    } const rows[] = {
        {"example~", 11025.0, "constructor: no"},
        {"example~ throw", 44100.0, "argument: no"},
        {"example~ refuse", 44100.0, "set up: no"},
        {"example~ \"open", 44100.0, "box text: quote without an end at character 10"},
        {"nothing~", 44100.0, "nothing~: no such object"},
        {"", 44100.0, "box text: begins with no object name"},
    };
    for (const auto& [text, rate, error] : rows) {
        SCOPED_TRACE(text);
        made.host.set_defaults(rate, 64);
        made.said();
        try {
            const auto unexpected = made.host.make(text);
            ADD_FAILURE() << "was made";
        } catch (const std::runtime_error& refusal) {
            EXPECT_NE(std::string(refusal.what()).find(error), std::string::npos) << refusal.what();
        }
        EXPECT_EQ(made.host.live(), before);
    }
}

TEST(Instance, HoldsHostMemoryOnlyWhileItLives) {
    example_box made;
    made.box.reset();
    const tesk::live_memory before = made.host.live();
    {
        const auto box = made.host.make("example~ 1 @steps 2");
        EXPECT_NE(made.host.live(), before);
        box->get("value");
        box->get_number("gain");
    }
    EXPECT_EQ(made.host.live(), before);
    void* const saved = made.host.new_dictionary("saved");
    made.host.bind("#D", saved);
    const tesk::live_memory with_saved = made.host.live();
    const auto box = made.host.make("example~");
    EXPECT_EQ(made.host.live().dictionaries, with_saved.dictionaries) << "takes the saved one";
    made.host.bind("#D", nullptr);
    box->free();
    EXPECT_EQ(made.host.live(), with_saved) << "and leaves it to the host";
    made.host.free_dictionary(saved);
}

TEST(Message, ReachesTheObjectWithItsArgumentsAsAtoms) {
    const example_box made;
    tesk::instance& box = *made.box;
    void* const self = box.object();
    void* const dictionary = made.host.new_dictionary("named");
    made.said();

    // By text.
    for (const char* text :
         {"bang", "5", "0.5", "here 4", "unknown 1 \"two words\"", "dictionary named"})
        EXPECT_TRUE(box.send(text, 1)) << text;
    EXPECT_EQ(made.said(), (lines{"bang ", "int 5", "number 0.5", "here 4 1",
                                  "anything unknown 1 \"two words\"", "dictionary <object>"}));
    EXPECT_EQ(made.host.live().dictionaries, 2) << "its own and the named one, retained no more";

    // By the host, with argument lists of their own.
    for (const char* name : {"dblclick", "edclose", "okclose", "loadbang"})
        method_of<void(void*)>(box, name)(self);
    method_of<void(void*, int64_t)>(box, "dspstate")(self, 1);
    for (const char* name : {"paint", "focusgained", "focuslost"})
        method_of<void(void*, void*)>(box, name)(self, self);
    method_of<void(void*, void*)>(box, "fileusage")(self, self);
    method_of<void(void*, void*)>(box, "appendtodictionary")(self, dictionary);
    method_of<void(void*, void*, int64_t, void*, int64_t, void*, int64_t)>(box, "patchlineupdate")(
        self, self, 1, self, 2, self, 3);
    method_of<void(void*, tesk_symbol*, ...)>(box, "words")(self, gensym("words"), "one", "2",
                                                            static_cast<const char*>(nullptr));
    EXPECT_EQ(
        made.said(),
        (lines{"dblclick ", "edclose ", "okclose ", "loadbang ", "dspstate 1",
               "paint <object> <object>", "focusgained <object> <object>",
               "focuslost <object> <object>", "fileusage <object>", "savestate <object>",
               "patchlineupdate <object> <object> 1 <object> 2 <object> 3", "words one \"2\""}));
    made.host.free_dictionary(dictionary);
}

TEST(Message, AnswersTheHostWhereItExpectsAResult) {
    const example_box made;
    tesk::instance& box = *made.box;
    void* const self = box.object();
    made.said();
    auto* const word = gensym("word");
    EXPECT_EQ((method_of<int64_t(void*, tesk_symbol*, tesk_symbol*, void*, void*)>(box, "notify")(
                  self, word, word, self, self)),
              7);
    EXPECT_EQ((method_of<int64_t(void*, void*, int64_t, int64_t, int64_t)>(box, "key")(self, self,
                                                                                       1, 2, 3)),
              0)
        << "an empty result";
    EXPECT_EQ(made.said(), (lines{"notify <object> word word <object> <object>",
                                  "key <object> <object> 1 2 3"}));
    EXPECT_EQ(method_of<void*(void*, void*)>(box, "oksize")(self, self), self);
    int64_t playing = 0, looping = 0;
    double position = 0;
    method_of<void(void*, int64_t*, double*, int64_t*)>(box, "getplaystate")(self, &playing,
                                                                             &position, &looping);
    EXPECT_EQ(playing, 1);
    EXPECT_EQ(position, 0.5);
    EXPECT_EQ(looping, 2);
    tesk::atom_list summands = tesk::atoms_of_text("2 3");
    tesk_atom result{};
    auto* const sum =
        method_of<void(void*, tesk_symbol*, int64_t, tesk_atom*, tesk_atom*)>(box, "sum");
    sum(self, gensym("sum"), 2, summands.data(), &result);
    EXPECT_EQ(atom_getlong(&result), 5);
    made.said();
    sum(self, gensym("sum"), 1, summands.data(), &result);
    EXPECT_EQ(made.said().size(), 1u) << "an exception ends in the error channel";
    EXPECT_EQ(atom_getlong(&result), 5);
}

TEST(Message, OfTheMouseAndOfFingersCarriesAnEvent) {
    const example_box made;
    tesk::instance& box = *made.box;
    void* const self = box.object();
    made.said();
    for (const char* name : {"mousedragdelta", "mousedoubleclick"})
        method_of<void(void*, void*, tesk_point, int64_t)>(box, name)(self, self, {2, 3}, 16);
    method_of<void(void*, void*, tesk_point, int64_t, double, double)>(box, "mousewheel")(
        self, self, {2, 3}, 16, 0.5, -0.5);
    const tesk_touch finger{4, {7, 8}, 0, 0};
    for (const char* name : {"mt_mouseenter", "mt_mouseleave", "mt_mousedown", "mt_mouseup",
                             "mt_mousemove", "mt_mousedrag"})
        method_of<void(void*, void*, const tesk_touch*)>(box, name)(self, self, &finger);
    EXPECT_EQ(made.said(),
              (lines{"mousedragdelta 2.0 3.0 16 100.0 0 1", "mousedoubleclick 2.0 3.0 16 100.0 0 1",
                     "mousewheel 2.0 3.0 16 100.0 0 1 0.5 -0.5", "mt_mouseenter 4 7.0",
                     "mt_mouseleave 4 7.0", "mt_mousedown 4 7.0", "mt_mouseup 4 7.0",
                     "mt_mousemove 4 7.0", "mt_mousedrag 4 7.0"}));
}

TEST(Message, ThatCannotBeIsRefusedWithALineThatNamesIt) {
    package folder;
    tesk::host& host = tesk::host::the();
    host.load(folder.with(PLAIN_OBJECT));
    const auto box = host.make("plain");
    EXPECT_TRUE(box->send("7", 1)) << "integers go through \"float\"";
    EXPECT_EQ(host.take_errors(), lines{"plain: float 7 at 0"}) << "one inlet is inlet 0";
    struct {
        const char* text;
        const char* error;
    } const rows[] = {
        {"mousedown 1", "plain: mousedown is a private message"},
        {"dsp64", "plain: dsp64 is a private message"},
        {"missing 1", "plain: no message or attribute named missing"},
        {"gone 1", "plain: no message or attribute named gone"},
        {"float", "plain: float needs a value"},
        {"", "plain: empty message"},
        {"a\"b", "plain: message not understood: quote inside a name at character 2"},
        {"x 1e999", "plain: message not understood: number out of range at character 3"},
        {"x \"a\"b",
         "plain: message not understood: no blank behind a closing quote at "
         "character 6"},
    };
    for (const auto& [text, error] : rows) {
        EXPECT_FALSE(box->send(text)) << text;
        EXPECT_EQ(host.take_errors(), lines{error});
    }
    const example_box made;
    made.said();
    EXPECT_TRUE(made.box->send("fails"));
    EXPECT_EQ(made.said(), lines{"message failed"});
}

TEST(Attribute, StoresWhatItsTypeMakesOfAValue) {
    const example_box made;
    tesk::instance& box = *made.box;
    made.said();
    struct {
        const char* message;
        const char* attribute;
        const char* result;
    } const rows[] = {
        {"gain 7.5", "gain", "7.5"},  // outside its range: stored unchanged
        {"gain", "gain", "7.5"},      // no value changes nothing
        {"value 1 2.5 word", "value", "1.0 2.5 0.0"},
        {"value", "value", "1.0 2.5 0.0"},
        {"locked 0", "locked", "1"},  // read-only
        {"shape \"quite flat\"", "shape", "2"},
        {"shape 7", "shape", "2"},
        {"shape -1", "shape", "0"},
        {"set_shape round", "set_shape", "0"},  // the host gives the index
        {"set_shape 9", "set_shape", "2"},
        {"word b", "word", "1"},
        {"word c d", "word", "2"},
        {"word d", "word", "2"},  // no such name
        {"fontname 3", "fontname", "9.0"},
        {"secret 4", "secret", "4.0"},
    };
    for (const auto& [message, attribute, result] : rows) {
        EXPECT_TRUE(box.send(message)) << message;
        EXPECT_EQ(tesk::text_of_atoms(box.get(attribute)), result) << message;
    }
    EXPECT_EQ(made.said(), lines{"gain 7.5"}) << "the setter runs once for each value";
    EXPECT_FALSE(box.send("shape oval"));
    EXPECT_FALSE(box.set("value", std::vector<double>(65536)));
    EXPECT_FALSE(box.set("missing", 1.0));
    EXPECT_EQ(made.said(),
              (lines{"shape: no value named oval", "value: 65536 values, at most 65535",
                     "no attribute named missing"}));
    EXPECT_TRUE(std::isnan(box.get_number("missing")));
}

TEST(Attribute, ReuseAnArrayOfTheRightSizeOnReading) {
    const example_box made;
    int64_t count = 0;
    tesk_atom* values = nullptr;
    const tesk::live_memory before = made.host.live();
    EXPECT_EQ(object_attr_getvalueof(made.box->object(), gensym("value"), &count, &values), 0);
    ASSERT_EQ(count, 2);
    tesk_atom* const same = values;
    made.box->send("value 8 9");
    object_attr_getvalueof(made.box->object(), gensym("value"), &count, &values);
    EXPECT_EQ(values, same);
    EXPECT_EQ(values[1].value.as_float, 9.0);
    object_attr_getvalueof(made.box->object(), gensym("gain"), &count, &values);
    EXPECT_EQ(count, 1);
    sysmem_freeptr(values);
    EXPECT_EQ(made.host.live(), before);
}

TEST(Preset, TakesAtMostThirteenValues) {
    const example_box made;
    for (const int values : {13, 14}) {
        made.box->set("value", std::vector<double>(static_cast<std::size_t>(values), 0.5));
        made.said();
        std::string expected = "example~ value";
        for (int i = 0; i < 13; ++i) expected += " 0.5";
        EXPECT_EQ(made.host.store_preset(), lines{expected});
        EXPECT_EQ(made.said(),
                  values == 13
                      ? lines{}
                      : lines{"Too many values to be stored as a preset. Truncating list."});
    }
    reinterpret_cast<void (*)(void*)>(made.box->method("preset"))(made.box->object());
    EXPECT_TRUE(made.said().empty()) << "without a preset under way nothing happens";
}

TEST(Signal, RunsBetweenSetUpAndFree) {
    const example_box made;
    tesk::instance& box = *made.box;
    std::vector<double> left(16, 1.0), right(16, 0.25), sum(16, 9.0), calls(16, 9.0);
    const double* const in[] = {left.data(), right.data()};
    double* const out[] = {sum.data(), calls.data()};
    EXPECT_FALSE(box.run(in, out, 16)) << "before \"dsp64\"";
    EXPECT_EQ(sum[15], 0.0);
    made.said();
    EXPECT_TRUE(box.prepare(48000.0, 16, {1, 0, 1, 0}));
    EXPECT_EQ(made.said(), lines{"dspsetup 48000.0 16"});
    EXPECT_TRUE(box.run(in, out, 16));
    EXPECT_TRUE(box.run(in, out, 8));
    EXPECT_EQ(sum[15], 1.25);
    EXPECT_EQ(calls[7], 2.0);
    EXPECT_EQ(calls[8], 1.0);
    box.free();
    EXPECT_FALSE(box.run(in, out, 16));
    EXPECT_FALSE(box.prepare(48000.0, 16));
    EXPECT_FALSE(box.send("here 1"));
    EXPECT_FALSE(box.set("gain", 1.0));
    EXPECT_TRUE(box.get("gain").empty());
    EXPECT_TRUE(made.said().empty());
}
