#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <optional>

#include "python/FixColumns.h"
#include "python/fixSpans.h"
#include "python/parts.h"
#include "python/sources.h"

namespace vextrace::python {

namespace {

// What is read side by side is so much altogether: enough that what is read in front of each span
// hardly counts, and little beside the table of a large trace.
constexpr uint64_t AT_A_TIME = uint64_t{32} << 20;
constexpr uint64_t WORTH_IT = AT_A_TIME / 2;

TraceRange rangeOf(uint64_t begin, std::optional<uint64_t> end) {
    TraceRange range;
    range.begin = begin;
    range.end = end.value_or(range.end);
    range.givesBefore = true;
    return range;
}

// The fixes of traces as columns.
class FixTable {
public:
    FixTable(timeStamp_t from, timeStamp_t until, bool unchecked)
        : choice{from, until, unchecked} {}

    // \param span  bytes that a thread reads at a time, at least 1
    Findings add(const py::object& source, uint32_t number, uint64_t begin,
                 std::optional<uint64_t> end, std::optional<uint64_t> span) {
        const Use use(inUse);
        Input input(source);
        const Unlocked unlocked(!input.callsPython());
        const FixWish wish = {number, choice};
        const uint64_t size = begin == 0 && !end ? input.size().value_or(0) : 0;
        const uint64_t atOnce = span.value_or(usualSpan(size));
        return size > atOnce ? readFixesSideBySide(input, wish, atOnce, columns)
                             : readFixes(input.bytes(), wish, rangeOf(begin, end), columns);
    }

    py::dict take() {
        const Use use(inUse);
        return columns.take();
    }

private:
    // As many for each thread, of a trace that is worth it.
    static uint64_t usualSpan(uint64_t size) {
        const uint64_t rounds = size / AT_A_TIME + 1;
        return size > WORTH_IT ? size / (rounds * threadsOf()) + 1 : size;
    }

    const FixChoice choice;
    bool inUse = false;
    FixColumns columns;
};

}  // namespace

void addFixTable(py::module_& module) {
    using namespace py::literals;
    py::class_<Findings> findings(module, "_Findings", py::is_final());
    findings.def_readonly("bytes", &Findings::bytes)
        .def_readonly("messages", &Findings::messages)
        .def_readonly("places", &Findings::places)
        .def_readonly("damaged_bytes", &Findings::damagedBytes)
        .def_readonly("first_damage", &Findings::firstDamage)
        .def_readonly("first_reason", &Findings::firstReason)
        .def_property_readonly("is_trace", &Findings::isTrace);
    py::class_<FixTable> tables(module, "_FixTable", py::is_final());
    tables.def(py::init<timeStamp_t, timeStamp_t, bool>(), "from_"_a, "until"_a, "unchecked"_a)
        .def("add", &FixTable::add, "source"_a, "number"_a, "begin"_a = 0, "end"_a = py::none(),
             "span"_a = py::none())
        .def("take", &FixTable::take);
    constructNever(findings);
    constructByNew(tables);
}

}  // namespace vextrace::python
