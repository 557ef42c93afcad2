// The script language's two hot paths: loading a scene-sized text and the per-frame
// recalculation of formula attributes.
//   build/bin/vorra-script-bench

#include <benchmark/benchmark.h>

#include <vector>

#include "logging/Logger.h"
#include "script/Attributes.h"
#include "script/Closure.h"
#include "script/Expressions.h"
#include "script/Objects.h"
#include "script/Parser.h"
#include "script/Reflected.h"
#include "script/Tokenizer.h"

namespace {

// Stands in for the scene: each creator command runs its inline function, as the loader
// runs the block of a scene line.
class FakeScene : public script::Reflected {
public:
    FakeScene() : script::Reflected("Scene") {
        AddCommand("addBox", [this](script::ObjectPtr block) {
            auto* function = dynamic_cast<script::AbstractFunction*>(block.Get());
            if (function) {
                function->Call(script::ObjectList());
                ++m_created;
            }
        });
    }
    int m_created = 0;
};

// About 1 MB: 5,000 creator calls of ten assignments each.
util::String SceneText() {
    util::String text;
    for (int i = 0; i < 5000; ++i) {
        const util::String n = std::to_string(i);
        text += "Scene.addBox {\n    pos = [" + n +
                ".25, 2.5];\n    size = [1.0, 2.0];\n"
                "    angle = 0.5;\n    density = 2.0;\n    friction = 0.3;\n"
                "    restitution = 0.125;\n    colour = [0.2, 0.4, 0.6, 1.0];\n"
                "    name = \"box number " +
                n + "\";\n    id = " + n +
                ";\n"
                "    layers = [1, 2, 3]\n};\n";
    }
    return text;
}

script::Parser& QuietParser() {
    static script::Parser* parser = [] {
        logging::Logger::Get();  // no sinks: nothing is printed
        script::Parser& p = script::Parser::Get();
        p.SetErrorHandler([](const util::String&) {});
        script::AddToRoot(new FakeScene());
        return &p;
    }();
    return *parser;
}

void ReportPerMegabyte(benchmark::State& state, size_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["ms_per_MB"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(bytes) / (1 << 20) / 1000.0,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_SceneText_Tokenize(benchmark::State& state) {
    const util::String text = SceneText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(script::Tokenizer::Tokenize(text));
    }
    ReportPerMegabyte(state, text.size());
}
BENCHMARK(BM_SceneText_Tokenize)->Unit(benchmark::kMillisecond);

void BM_SceneText_Parse(benchmark::State& state) {
    script::Parser& parser = QuietParser();
    const script::TokenList tokens = script::Tokenizer::Tokenize(SceneText());
    const size_t bytes = SceneText().size();
    for (auto _ : state) {
        benchmark::DoNotOptimize(parser.Parse(tokens));
        util::SweepHandles();  // as the next frame does
    }
    ReportPerMegabyte(state, bytes);
}
BENCHMARK(BM_SceneText_Parse)->Unit(benchmark::kMillisecond);

void BM_SceneText_Evaluate(benchmark::State& state) {
    script::Parser& parser = QuietParser();
    const util::String text = SceneText();
    const script::CodeBlockPtr tree = parser.Parse(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(tree->Evaluate(parser.GetRootClosure()));
        util::SweepHandles();
    }
    ReportPerMegabyte(state, text.size());
}
BENCHMARK(BM_SceneText_Evaluate)->Unit(benchmark::kMillisecond);

// The whole load: text to tree to values, as a scene file is executed.
void BM_SceneText_Execute(benchmark::State& state) {
    script::Parser& parser = QuietParser();
    const util::String text = SceneText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(parser.Execute(text));
        util::SweepHandles();
    }
    ReportPerMegabyte(state, text.size());
    state.counters["MB"] = static_cast<double>(text.size()) / (1 << 20);
}
BENCHMARK(BM_SceneText_Execute)->Unit(benchmark::kMillisecond);

// Objects holding attributes whose script side may be a formula.
class Holder : public script::Reflected {
public:
    explicit Holder(int index) : script::Reflected("Holder" + std::to_string(index)) {
        AddAttrib(value, "value", 0.0f);
    }
    script::AttribPtr<float> value;
};

// Every attribute holds the same formula over a global input, evaluated in the root.
void UpdateWithFormula(benchmark::State& state, const char* formulaText) {
    script::Parser& parser = QuietParser();
    const int count = static_cast<int>(state.range(0));
    script::ClosurePtr group(new script::Closure("[bench]", nullptr));
    parser.GetRootClosure()->AddVariable("benchGroup", group);
    std::vector<util::SharedPtr<Holder>> holders;
    for (int i = 0; i < count; ++i) {
        holders.emplace_back(new Holder(i));
        group->AddReflected(holders.back());
    }
    parser.Execute("input = 1.5");
    const script::CodeBlockPtr formula = parser.Parse(formulaText);
    const script::ObjectPtr function = formula->Evaluate(parser.GetRootClosure());
    for (const auto& holder : holders) {
        holder->value->SetValue(function);
    }
    for (auto _ : state) {
        parser.Update();
        util::SweepHandles();  // the frame's own sweep of the values the pass made
    }
    state.counters["attributes"] = count;
    state.counters["us_per_frame"] =
        benchmark::Counter(static_cast<double>(state.iterations()) / 1e6,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    parser.GetRootClosure()->RemoveVariable("benchGroup");
    for (const auto& holder : holders) {
        holder->value->SetNative(0);
    }
}

void BM_Update_FormulaOneOperation(benchmark::State& state) {
    UpdateWithFormula(state, "{ input * 2 }");
}
BENCHMARK(BM_Update_FormulaOneOperation)->Arg(10000)->Unit(benchmark::kMicrosecond);

void BM_Update_FormulaTwoOperations(benchmark::State& state) {
    UpdateWithFormula(state, "{ (input * 2) + 1 }");
}
BENCHMARK(BM_Update_FormulaTwoOperations)->Arg(10000)->Unit(benchmark::kMicrosecond);

// The same attributes holding plain values: the floor of the pass.
void BM_Update_PlainAttributes(benchmark::State& state) {
    script::Parser& parser = QuietParser();
    std::vector<util::SharedPtr<Holder>> holders;
    for (int i = 0; i < state.range(0); ++i) {
        holders.emplace_back(new Holder(i));
    }
    for (auto _ : state) {
        parser.Update();
    }
}
BENCHMARK(BM_Update_PlainAttributes)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
