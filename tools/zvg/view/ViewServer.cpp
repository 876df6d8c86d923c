#include "tools/zvg/view/ViewServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "ZVSmartModel/Error.h"
#include "tools/zvg/view/HttpFunctions.h"
#include "tools/zvg/view/ModelUpload.h"

namespace ZVSmartModel::Tool {

namespace {

// A browser asks with six connections at a time. Who says nothing for so long is hung up on.
constexpr unsigned int mostConnections = 64, secondsOfSilence = 20;
constexpr std::size_t mostBytesOfHead = 32 << 10;
constexpr std::size_t mostFiles = 1000;
constexpr std::string_view filesFolder = "/files/";

/// The page's own code may run, and nothing may come from or go to elsewhere: what a file makes
/// the page do by a fault of the page reaches this server and no other.
constexpr const char* pagePolicy =
    "default-src 'self' data: blob:; script-src 'self' 'unsafe-inline' 'wasm-unsafe-eval' blob:; "
    "style-src 'self' 'unsafe-inline'; object-src 'none'; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'";

using HeaderList = std::initializer_list<std::pair<const char*, std::string>>;

/// A request under way.
struct Request {
    std::unique_ptr<ModelUpload> upload;
};

std::string Said(MHD_Connection* connection, MHD_ValueKind kind, const char* name) {
    const char* const value = MHD_lookup_connection_value(connection, kind, name);
    return value ? value : "";
}

std::string Header(MHD_Connection* connection, const char* name) {
    return Said(connection, MHD_HEADER_KIND, name);
}

/// Sends `response`, which may be null where there is no memory, and gives it back.
MHD_Result Send(MHD_Connection* connection, unsigned int status, MHD_Response* response,
                const HeaderList& headers) {
    if (!response) return MHD_NO;
    const HeaderList always = {{"X-Content-Type-Options", "nosniff"},
                               {"Cross-Origin-Resource-Policy", "same-origin"},
                               {"Referrer-Policy", "no-referrer"},
                               {"Cache-Control", "no-cache"}};
    for (const HeaderList& list : {always, headers}) {
        for (const auto& [name, value] : list) {
            MHD_add_response_header(response, name, value.c_str());
        }
    }
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

MHD_Result SendJson(MHD_Connection* connection, unsigned int status, const nlohmann::json& said) {
    std::string text = said.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    MHD_Response* const response =
        MHD_create_response_from_buffer(text.size(), text.data(), MHD_RESPMEM_MUST_COPY);
    return Send(connection, status, response, {{"Content-Type", "application/json"}});
}

MHD_Result Refuse(MHD_Connection* connection, unsigned int status, const std::string& reason) {
    return SendJson(connection, status, {{"error", reason}});
}

class ViewServer {
  public:
    ViewServer(const ViewerPage& page, ServedFiles& files, std::uint16_t port)
        : page(page.Head() + "<meta name=\"zvg-serve\" content=\"1\">" + page.Tail()),
          files(files) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        daemon = MHD_start_daemon(
            MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_POLL, 0,
            nullptr, nullptr, &ViewServer::Answer, this, MHD_OPTION_SOCK_ADDR, &address,
            MHD_OPTION_CONNECTION_LIMIT, mostConnections, MHD_OPTION_CONNECTION_TIMEOUT,
            secondsOfSilence, MHD_OPTION_CONNECTION_MEMORY_LIMIT, mostBytesOfHead,
            MHD_OPTION_NOTIFY_COMPLETED, &ViewServer::Forget, nullptr, MHD_OPTION_END);
        const MHD_DaemonInfo* const info =
            daemon ? MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT) : nullptr;
        if (!info) {
            throw Error(Status::InputOutput,
                        "cannot serve at 127.0.0.1:" + std::to_string(port) + " (is it taken?)");
        }
        const std::string number = ':' + std::to_string(info->port);
        host = "127.0.0.1" + number;
        otherHost = "localhost" + number;
        ready = true;
    }

    ~ViewServer() {
        cancelled = true;
        if (daemon) MHD_stop_daemon(daemon);
    }
    ViewServer(const ViewServer&) = delete;
    ViewServer& operator=(const ViewServer&) = delete;

    std::string Address() const { return "http://" + host + '/'; }

  private:
    static MHD_Result Answer(void* server, MHD_Connection* connection, const char* url,
                             const char* method, const char* /*version*/, const char* body,
                             std::size_t* bodyBytes, void** state) {
        try {
            if (!*state) *state = new Request;
            return static_cast<ViewServer*>(server)->Route(connection, url, method,
                                                           {body, *bodyBytes}, *bodyBytes,
                                                           *static_cast<Request*>(*state));
        } catch (const std::exception&) {
            return MHD_NO;  // hangs up
        }
    }

    static void Forget(void* /*server*/, MHD_Connection* /*connection*/, void** state,
                       MHD_RequestTerminationCode /*how*/) {
        delete static_cast<Request*>(*state);
        *state = nullptr;
    }

    /// `left` becomes what is not taken of the body.
    MHD_Result Route(MHD_Connection* connection, const std::string& url, const std::string& method,
                     std::string_view body, std::size_t& left, Request& request) {
        if (request.upload) return TakeModel(connection, body, left, request);
        if (!ready) return Refuse(connection, MHD_HTTP_SERVICE_UNAVAILABLE, "not yet");
        if (!IsFromHere(connection)) {
            return Refuse(connection, MHD_HTTP_FORBIDDEN, "this is for this machine's own page");
        }
        if (method == MHD_HTTP_METHOD_POST) return BeginModel(connection, url, request);
        if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD) {
            return Refuse(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "GET, HEAD or POST");
        }
        if (url == "/") return SendPage(connection);
        if (!IsFromPage(connection)) {
            return Refuse(connection, MHD_HTTP_FORBIDDEN, "this is for the page alone");
        }
        if (url.rfind(filesFolder, 0) == 0) {
            return SendFile(connection, url.substr(filesFolder.size()));
        }
        return Refuse(connection, MHD_HTTP_NOT_FOUND, "there is no such file");
    }

    /// A name that leads here from elsewhere is that of a page which wants to pass for ours.
    bool IsFromHere(MHD_Connection* connection) const {
        const std::string named = Header(connection, "Host");
        return named == host || named == otherHost;
    }

    /// Browsers that tell where a request comes from tell that it is another page's.
    static bool IsFromPage(MHD_Connection* connection) {
        const std::string site = Header(connection, "Sec-Fetch-Site");
        return site.empty() || site == "same-origin" || site == "none";
    }

    MHD_Result SendPage(MHD_Connection* connection) const {
        // MHD takes a pointer that could be written to, and does not write.
        auto* const text = const_cast<char*>(page.data());  // NOLINT
        return Send(connection, MHD_HTTP_OK,
                    MHD_create_response_from_buffer(page.size(), text, MHD_RESPMEM_PERSISTENT),
                    {{"Content-Type", "text/html; charset=utf-8"},
                     {"Content-Security-Policy", pagePolicy}});
    }

    MHD_Result SendFile(MHD_Connection* connection, const std::string& name) const {
        std::optional<OpenedServedFile> file = files.Open(name);
        if (!file) return Refuse(connection, MHD_HTTP_NOT_FOUND, "there is no such file");
        const std::string isSame = Header(connection, "If-Range");
        const bool heedsRange = isSame.empty() || isSame == file->tag;
        const AskedRange asked =
            AskedOf(heedsRange ? Header(connection, "Range") : "", file->bytes);
        const std::string size = std::to_string(file->bytes);
        if (!asked.range) {
            MHD_Response* const nothing =
                MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
            return Send(connection, MHD_HTTP_RANGE_NOT_SATISFIABLE, nothing,
                        {{"Content-Range", "bytes */" + size}});
        }
        const auto [first, count] = *asked.range;
        MHD_Response* const response =
            MHD_create_response_from_fd_at_offset64(count, file->descriptor.Number(), first);
        if (response) file->descriptor.Release();  // which is the response's now
        const HeaderList whole = {{"Content-Type", "application/octet-stream"},
                                  {"Accept-Ranges", "bytes"},
                                  {"ETag", file->tag}};
        if (!asked.isPart) return Send(connection, MHD_HTTP_OK, response, whole);
        if (response) {
            const std::string part = "bytes " + std::to_string(first) + '-' +
                                     std::to_string(first + count - 1) + '/' + size;
            MHD_add_response_header(response, "Content-Range", part.c_str());
        }
        return Send(connection, MHD_HTTP_PARTIAL_CONTENT, response, whole);
    }

    MHD_Result BeginModel(MHD_Connection* connection, const std::string& url, Request& request) {
        const std::string origin = Header(connection, "Origin");
        if (origin != "http://" + Header(connection, "Host") || !IsFromPage(connection)) {
            return Refuse(connection, MHD_HTTP_FORBIDDEN, "this is for the page alone");
        }
        if (url != "/pack") return Refuse(connection, MHD_HTTP_NOT_FOUND, "post to /pack");
        const std::string name = Said(connection, MHD_GET_ARGUMENT_KIND, "name");
        if (!ModelUpload::IsGoodName(name)) {
            return Refuse(connection, MHD_HTTP_BAD_REQUEST, "name: a file's name is wanted");
        }
        const std::string length = Header(connection, "Content-Length");
        if (length.size() > 19 ||
            std::strtoull(length.c_str(), nullptr, 10) > ModelUpload::mostBytes) {
            return Refuse(connection, MHD_HTTP_CONTENT_TOO_LARGE, "the model is too large");
        }
        if (files.Count() >= mostFiles) {
            return Refuse(connection, MHD_HTTP_INSUFFICIENT_STORAGE, "there are too many files");
        }
        try {
            request.upload = std::make_unique<ModelUpload>(name);
        } catch (const Error& error) {
            return Refuse(connection, MHD_HTTP_INSUFFICIENT_STORAGE, error.what());
        }
        return MHD_YES;
    }

    MHD_Result TakeModel(MHD_Connection* connection, std::string_view body, std::size_t& left,
                         Request& request) {
        if (body.empty()) return PackModel(connection, *request.upload);
        left = 0;
        return request.upload->Take(body.data(), body.size()) ? MHD_YES : MHD_NO;
    }

    /// While a model is packed nothing is heard of the browser, which is no fault of it.
    MHD_Result PackModel(MHD_Connection* connection, ModelUpload& upload) {
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, 0U);
        const MHD_Result result = PackAndAnswer(connection, upload);
        MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, secondsOfSilence);
        return result;
    }

    MHD_Result PackAndAnswer(MHD_Connection* connection, ModelUpload& upload) {
        try {
            const std::lock_guard oneAtATime(packing);
            const std::string name = files.AddOpen(upload.BlockName(), upload.Pack(cancelled));
            return SendJson(connection, MHD_HTTP_OK, {{"src", AddressOf(name)}});
        } catch (const Error& error) {
            const bool isOurs = error.GetStatus() == Status::Internal;
            const bool isLate = error.GetStatus() == Status::Cancelled;
            return Refuse(connection,
                          isOurs   ? MHD_HTTP_INTERNAL_SERVER_ERROR
                          : isLate ? MHD_HTTP_SERVICE_UNAVAILABLE
                                   : MHD_HTTP_UNPROCESSABLE_CONTENT,
                          error.what());
        }
    }

    std::string page;
    ServedFiles& files;
    std::string host, otherHost;
    std::atomic<bool> ready = false;
    std::atomic<bool> cancelled = false;
    std::mutex packing;
    MHD_Daemon* daemon = nullptr;
};

/// While one exists, the signals that end a process wait for `Wait`; those that the caller ignores
/// stay ignored.
class EndingSignals {
  public:
    EndingSignals() {
        sigemptyset(&signals);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction action = {};
            sigaction(number, nullptr, &action);
            if (action.sa_handler != SIG_IGN) sigaddset(&signals, number);
        }
        pthread_sigmask(SIG_BLOCK, &signals, &before);
    }
    ~EndingSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

    void Wait() const {
        int number = 0;
        sigwait(&signals, &number);
    }

  private:
    sigset_t signals = {}, before = {};
};

}  // namespace

bool CanServe() {
    return true;
}

void ServeUntilSignal(const ViewerPage& page, ServedFiles& files, std::uint16_t port,
                      const std::function<void(const std::string& address)>& tell) {
    const EndingSignals signals;  // ahead of the server, whose threads then leave them alone too
    const ViewServer server(page, files, port);
    tell(server.Address());
    signals.Wait();
}

}  // namespace ZVSmartModel::Tool
