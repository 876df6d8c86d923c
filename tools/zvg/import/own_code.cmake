# What of the importers needs no foreign library, for the fuzzers as well.
set(ZVG_IMPORT_OWN_CODE ChildMessages.cpp FilePassing.cpp ImportFindings.cpp Model.cpp ModelCurves.cpp ModelFile.cpp
    ModelFolder.cpp ShapeStore.cpp StepCycles.cpp StepNames.cpp
    StepStatement.cpp StepText.cpp UnusableGeometry.cpp)
