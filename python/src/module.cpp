// module.cpp - clutterclassifier._core: the library's operations on numpy arrays, without checks.
#include "arrays.h"

PYBIND11_MODULE(_core, module) {
    module.doc() =
        "Operations of the library on contiguous arrays; the package checks and documents.";
    python::bindClassify(module);
    python::bindScans(module);
    python::bindWrite(module);
    python::bindProcess(module);
    python::bindToolkit(module);
    python::bindPhase(module);
    python::bindAttenuation(module);
    python::bindRain(module);
    python::bindBeam(module);
    python::bindMembership(module);
}
