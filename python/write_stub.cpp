// Run by the build: writes the type stub of the Python module, for editors and type checkers.
//   write_stub FILE
#include <fstream>
#include <iostream>
#include <string>

#include "attribute_table.h"

namespace {

using kv7::orv::attribute_kind;

const char* type_of(attribute_kind kind) {
    switch (kind) {
        case attribute_kind::toggle:
            return "bool";
        case attribute_kind::choice:
            return "str";
        case attribute_kind::list:
            return "tuple[float, float]";
        case attribute_kind::continuous:
            break;
    }
    return "float";
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::cerr << "write_stub: expected FILE\n";
        return 2;
    }
    std::ofstream out(words[1]);
    out << "from typing import Any\n\nimport numpy\nfrom numpy.typing import NDArray\n\n"
           "_Value = float | bool | str | tuple[float, float]\n\n"
           "def presets() -> list[str]: ...\n\n"
           "class Vesk:\n"
           "    def __init__(self, rate: float, preset: str | None = ..., seed: int | None = ...,\n"
           "                 **attributes: _Value) -> None: ...\n"
           "    def process(self, sound: NDArray[Any]) -> NDArray[numpy.floating[Any]]: ...\n"
           "    def clear(self) -> None: ...\n"
           "    def reset(self) -> None: ...\n"
           "    @staticmethod\n    def attributes() -> list[str]: ...\n"
           "    @property\n    def rate(self) -> float: ...\n";
    for (const kv7::orv::attribute_row& row : kv7::orv::attribute_table)
        out << "    @property\n    def " << row.info.name << "(self) -> " << type_of(row.kind)
            << ": ...\n    @" << row.info.name << ".setter\n    def " << row.info.name
            << "(self, value: _Value) -> None: ...\n";
    out.close();
    if (!out) {
        std::cerr << "write_stub: " << words[1] << ": could not be written\n";
        return 1;
    }
}
