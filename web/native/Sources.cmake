# What the module consists of, and what the tests build natively to compare it with.
set(ZVG_WEB_SOURCES Answer.cpp Module.cpp RangeStream.cpp CallRequest.cpp SceneWalk.cpp Search.cpp
    Session.cpp)
list(TRANSFORM ZVG_WEB_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
