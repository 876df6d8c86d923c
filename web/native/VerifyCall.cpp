#include "ZVSmartModel/Verify.h"
#include "web/native/Module.h"
#include "web/native/Session.h"

using namespace ZVSmartModel;
using namespace ZVSmartModel::Web;

int zvg_verify(Session* session) {
    return session->AskForText([&](Json& json) {
        session->Stream().Seek(0);
        Write(json, VerifyFile(session->Stream()));
    });
}
