# What the modules consist of, and what the tests build natively to compare them with.
set(ZVG_WEB_SESSION Answer.cpp RangeStream.cpp Session.cpp SessionCalls.cpp)
set(ZVG_WEB_READER Module.cpp CallRequest.cpp SceneWalk.cpp Search.cpp)
set(ZVG_WEB_VERIFIER VerifyCall.cpp)
foreach(part SESSION READER VERIFIER)
  list(TRANSFORM ZVG_WEB_${part} PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
endforeach()
