// Runs `zvg view` with a page of the test's own: what the page it writes holds, and what its server
// gives to whom.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <csignal>

#include <chrono>
#include <thread>

#include "tool_support.h"

using nlohmann::json;
namespace fs = std::filesystem;

namespace {

std::string Decoded(const std::string& base64) {
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned int bits = 0, count = 0;
    for (const char c : base64) {
        if (c == '=') break;
        bits = bits << 6 | static_cast<unsigned int>(digits.find(c));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xFF);
    }
    return bytes;
}

struct Response {
    int status = 0;
    std::string head, body;
};

/// A connection to the server; 20 seconds without an answer are none.
class Client {
  public:
    explicit Client(int port) : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        timeval patience = {20, 0};
        setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        EXPECT_EQ(connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~Client() { close(socket); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void Send(const std::string& text) const {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t count =
                send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) return;
            sent += static_cast<std::size_t>(count);
        }
    }
    Response Answer() const {
        std::string text(1 << 16, '\0'), all;
        for (ssize_t count = 0; (count = recv(socket, text.data(), text.size(), 0)) > 0;) {
            all.append(text, 0, static_cast<std::size_t>(count));
        }
        const std::size_t end = std::min(all.find("\r\n\r\n"), all.size());
        return {all.size() > 12 ? std::atoi(&all[9]) : 0, all.substr(0, end),
                all.substr(std::min(end + 4, all.size()))};
    }

  private:
    int socket;
};

class View : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        std::ofstream(folder + "page.html") << head << "<!-- zvg:files -->" << tail;
        setenv("ZVG_VIEWER", (folder + "page.html").c_str(), 1);
        setenv("TMPDIR", (folder + "tmp").c_str(), 1);
        fs::create_directory(folder + "tmp");
        ASSERT_EQ(Run("$Z pack --no-preview " ZVG_EXAMPLES_DIR "/house.ifc -o house.zvg"), 0);
        bytes = ReadAll(folder + "house.zvg");
    }
    void TearDown() override {
        if (server > 0) Stop(SIGTERM);
        unsetenv("TMPDIR");
        ToolFixture::TearDown();
    }

    /// Starts the server and gives the line that it prints.
    std::string Serve(const std::vector<std::string>& files) {
        int pipe[2] = {};
        EXPECT_EQ(pipe2(pipe, O_CLOEXEC), 0);
        std::vector<std::string> words = {ZVG_BINARY, "view", "--serve"};
        for (const std::string& file : files) words.push_back(folder + file);
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        server = fork();
        if (server == 0) {
            dup2(pipe[1], STDOUT_FILENO);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(pipe[1]);
        std::string line;
        for (char c = 0; read(pipe[0], &c, 1) == 1 && c != '\n';) line += c;
        close(pipe[0]);
        const std::string start = "http://127.0.0.1:";
        EXPECT_EQ(line.rfind(start, 0), 0U) << line;
        host = line.substr(7, line.find('/', 7) - 7);
        port = std::atoi(line.c_str() + start.size());
        return line;
    }
    /// Ends the server and gives its exit status.
    int Stop(int signal) {
        kill(server, signal);
        int status = 0;
        waitpid(server, &status, 0);
        server = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    Response Ask(const std::string& request, const std::string& headers = "",
                 const std::string& body = "") const {
        return AskAs(host, request, headers, body);
    }
    Response AskAs(const std::string& as, const std::string& request, const std::string& headers,
                   const std::string& body = "") const {
        const Client client(port);
        const std::string length =
            request[0] == 'P' ? "Content-Length: " + std::to_string(body.size()) + "\r\n" : "";
        client.Send(request + " HTTP/1.1\r\nHost: " + as + "\r\nConnection: close\r\n" + length +
                    headers + "\r\n" + body);
        return client.Answer();
    }
    std::string Origin() const { return "Origin: http://" + host + "\r\n"; }
    bool NothingIsLeft() const { return fs::is_empty(folder + "tmp"); }

    const std::string head = "<!doctype html>\n<title>t</title>\n", tail = "\n<script>1</script>\n";
    std::string bytes, host;
    int port = 0;
    pid_t server = 0;
};

TEST_F(View, APageHoldsItsFilesAsDataAlone) {
    const std::string hostile = R"("'><img src=x onerror=alert(1)>&.zvg)";
    fs::copy_file(folder + "house.zvg", folder + hostile);
    ASSERT_EQ(Run("cp house.zvg b.zvg; $Z view b.zvg *img*.zvg -o out.html"), 0) << err;
    const std::string page = ReadAll(folder + "out.html");
    const auto element = [](const std::string& name) {
        return "<script type=\"application/octet-stream\" class=\"zvg-file\" data-name=\"" + name +
               "\">";
    };
    const std::string first = element("b.zvg");
    const std::string second =
        element("&quot;&#39;&gt;&lt;img src=x onerror=alert(1)&gt;&amp;.zvg");
    const std::string end = "</script>\n";
    const std::size_t size = (bytes.size() + 2) / 3 * 4;
    ASSERT_EQ(page.size(),
              head.size() + tail.size() + first.size() + second.size() + 2 * (size + end.size()));
    EXPECT_EQ(page.substr(0, head.size() + first.size()), head + first);
    EXPECT_EQ(Decoded(page.substr(head.size() + first.size(), size)), bytes);
    const std::size_t at = head.size() + first.size() + size;
    EXPECT_EQ(page.substr(at, end.size() + second.size()), end + second);
    EXPECT_EQ(page.substr(page.size() - tail.size() - end.size()), end + tail);

    EXPECT_EQ(Run("cat house.zvg | $Z view - -o - | cmp -s - out.html"), 1) << "another name";
    EXPECT_EQ(Run("cat house.zvg | $Z view - -o piped.html"), 0) << err;
    EXPECT_NE(ReadAll(folder + "piped.html").find("\"standard-input.zvg\""), std::string::npos);
}

TEST_F(View, RefusesWhatIsNotThere) {
    std::ofstream(folder + "none.html") << head << tail;
    std::ofstream(folder + "two.html") << "<!-- zvg:files --><!-- zvg:files -->";
    std::ofstream(folder + "text.zvg") << "no block file";
    const bool hasPage = ZVG_HAS_PAGE && fs::exists(ZVG_PAGE);
    const struct {
        const char* words;
        int status;
    } cases[] = {{"$Z view house.zvg", 2},
                 {"$Z view house.zvg -o a.html --serve", 2},
                 {"$Z view -o a.html", 2},
                 {"ZVG_VIEWER= $Z view house.zvg -o c.html", hasPage ? 0 : 2},
                 {"ZVG_VIEWER=none.html $Z view house.zvg -o a.html", 3},
                 {"ZVG_VIEWER=two.html $Z view house.zvg -o a.html", 3},
                 {"ZVG_VIEWER=missing $Z view house.zvg -o a.html", 3},
                 {"$Z view text.zvg -o a.html", 4},
                 {"$Z view missing.zvg -o a.html", 3},
                 {"$Z view house.zvg -o page.html", 3},
                 {"$Z view house.zvg -o house.zvg --force", 3},
                 {"cat house.zvg | $Z view - --serve", 2},
                 {"$Z view house.zvg --serve --port 65536", 2},
                 {"$Z view text.zvg --serve", ZVG_CAN_SERVE ? 4 : 2}};
    for (const auto& [words, status] : cases) EXPECT_EQ(Run(words), status) << words << '\n' << err;
    EXPECT_FALSE(fs::exists(folder + "a.html"));
    EXPECT_EQ(ReadAll(folder + "house.zvg"), bytes);
    // The page that is installed with the tool, wherever that is.
    EXPECT_EQ(Run("mkdir -p p/bin p/share/zvg; cp $Z p/bin; cp page.html p/share/zvg/viewer.html; "
                  "ZVG_VIEWER= p/bin/zvg view house.zvg -o b.html"),
              0)
        << err;
    EXPECT_EQ(ReadAll(folder + "b.html").rfind(head, 0), 0U);
}

class ViewServer : public View {
  protected:
    void SetUp() override {
        View::SetUp();
        if (!ZVG_CAN_SERVE) GTEST_SKIP() << "this build serves no pages";
    }
};

TEST_F(ViewServer, ServesPageAndRanges) {
    fs::rename(folder + "house.zvg", folder + "a b.zvg");
    const std::string line = Serve({"a b.zvg"});
    EXPECT_EQ(line, "http://" + host + "/?src=/files/a%2520b.zvg");
    const Response page = Ask("GET /?src=x");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.body, head + "<meta name=\"zvg-serve\" content=\"1\">" + tail);
    EXPECT_NE(page.head.find("frame-ancestors 'none'"), std::string::npos);

    const std::string file = "GET /files/a%20b.zvg", size = std::to_string(bytes.size());
    const Response whole = Ask(file);
    EXPECT_EQ(whole.status, 200);
    EXPECT_EQ(whole.body, bytes);
    EXPECT_NE(whole.head.find("application/octet-stream"), std::string::npos);
    EXPECT_NE(whole.head.find("nosniff"), std::string::npos);
    const Response asked = Ask("HEAD /files/a%20b.zvg");
    EXPECT_EQ(asked.status, 200);
    EXPECT_EQ(asked.body, "");
    EXPECT_NE(asked.head.find("Content-Length: " + size), std::string::npos);
    const std::size_t tagAt = whole.head.find("ETag: ") + 6;
    const std::string tag = whole.head.substr(tagAt, whole.head.find('\r', tagAt) - tagAt);
    EXPECT_GT(tag.size(), 6U);

    const std::size_t last = bytes.size() - 1;
    const struct {
        std::string range;
        int status;
        std::string body, contentRange;
    } cases[] = {
        {"bytes=0-3", 206, bytes.substr(0, 4), "bytes 0-3/" + size},
        {"bytes=10-10", 206, bytes.substr(10, 1), "bytes 10-10/" + size},
        {"bytes=100-", 206, bytes.substr(100), "bytes 100-" + std::to_string(last) + '/' + size},
        {"bytes=" + std::to_string(last) + "-99999999999", 206, bytes.substr(last),
         "bytes " + std::to_string(last) + '-' + std::to_string(last) + '/' + size},
        {"bytes=-5", 206, bytes.substr(bytes.size() - 5),
         "bytes " + std::to_string(last - 4) + '-' + std::to_string(last) + '/' + size},
        {"bytes=" + size + "-", 416, "", "bytes */" + size},
        {"bytes=99999999-100000000", 416, "", "bytes */" + size},
        {"bytes=-0", 416, "", "bytes */" + size},
        {"bytes=0-18446744073709551615", 206, bytes,
         "bytes 0-" + std::to_string(last) + '/' + size},
        {"bytes=18446744073709551616-", 200, bytes, ""},
        {"bytes=5-2", 200, bytes, ""},
        {"bytes=0-1,4-5", 200, bytes, ""},
        {"bytes=-", 200, bytes, ""},
        {"lines=0-1", 200, bytes, ""},
        {"bytes=0-3\r\nIf-Range: " + tag, 206, bytes.substr(0, 4), "bytes 0-3/" + size},
        {"bytes=0-3\r\nIf-Range: \"other\"", 200, bytes, ""}};
    for (const auto& [range, status, body, contentRange] : cases) {
        const Response part = Ask(file, "Range: " + range + "\r\n");
        EXPECT_EQ(part.status, status) << range;
        EXPECT_TRUE(part.body == body) << range << ": " << part.body.size() << " bytes";
        const std::string said = "Content-Range: " + contentRange + "\r\n";
        EXPECT_EQ((part.head + "\r\n").find(said) != std::string::npos, !contentRange.empty())
            << range << '\n'
            << part.head;
    }
    // What is packed anew is another file.
    std::ofstream(folder + "a b.zvg", std::ios::app) << "more";
    EXPECT_EQ(Ask(file, "Range: bytes=0-3\r\nIf-Range: " + tag + "\r\n").status, 200);
    fs::remove(folder + "a b.zvg");
    EXPECT_EQ(Ask(file).status, 404);
    EXPECT_EQ(Stop(SIGINT), 0);
}

TEST_F(ViewServer, GivesNothingElseAndNothingToOthers) {
    std::ofstream(folder + "secret.zvg") << "secret";
    Serve({"house.zvg"});
    const std::string outside = folder.substr(1) + "secret.zvg";
    for (const std::string& path :
         {std::string("/files/secret.zvg"), std::string("/files/../secret.zvg"),
          std::string("/files/%2e%2e%2fsecret.zvg"), std::string("/files/..%5csecret.zvg"),
          "/files//" + outside, "/files/%2f" + outside, "/" + outside, std::string("/files/"),
          std::string("/files"), std::string("/house.zvg"), std::string("/files/house.zvg/"),
          std::string("/files/HOUSE.zvg"), std::string("/files/page.html"),
          std::string("//files/house.zvg"), "http://" + host + "/files/house.zvg"}) {
        const Response answer = Ask("GET " + path);
        EXPECT_EQ(answer.status, 404) << path;
        EXPECT_EQ(answer.body.find("secret"), std::string::npos) << path;
    }
    const std::string number = std::to_string(port);
    for (const std::string& other :
         {std::string("evil.example:") + number, std::string("127.0.0.1"), "localhost." + number,
          std::string("127.0.0.1:1"), "127.0.0.1:" + number + "0", std::string()}) {
        for (const char* path : {"GET /", "GET /files/house.zvg", "POST /pack?name=a.ifc"}) {
            const int status = AskAs(other, path, "Origin: http://" + other + "\r\n").status;
            EXPECT_TRUE(status == 403 || (other.empty() && status == 400)) << other << status;
        }
    }
    EXPECT_EQ(AskAs("localhost:" + number, "GET /files/house.zvg", "").status, 200);
    EXPECT_EQ(Ask("GET /files/house.zvg", "Sec-Fetch-Site: cross-site\r\n").status, 403);
    EXPECT_EQ(Ask("GET /files/house.zvg", "Sec-Fetch-Site: same-site\r\n").status, 403);
    EXPECT_EQ(Ask("GET /files/house.zvg", "Sec-Fetch-Site: same-origin\r\n").status, 200);
    EXPECT_EQ(Ask("DELETE /files/house.zvg").status, 405);
    EXPECT_EQ(Ask("PUT /files/house.zvg", Origin(), "x").status, 405);
    EXPECT_EQ(ReadAll(folder + "house.zvg"), bytes);
    // Nobody else on the network is answered.
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);  // 127.0.0.2 is this machine too
    EXPECT_NE(connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(socket);
}

TEST_F(ViewServer, PacksWhatIsDropped) {
    Serve({"house.zvg"});
    const std::string model = ReadAll(ZVG_EXAMPLES_DIR "/house.ifc");
    const std::string post = "POST /pack?name=house.ifc";
    for (const std::string& headers :
         {std::string(), std::string("Origin: http://evil.example\r\n"),
          std::string("Origin: null\r\n"), Origin() + "Sec-Fetch-Site: same-site\r\n",
          "Origin: http://localhost:" + std::to_string(port) + "\r\n"}) {
        EXPECT_EQ(Ask(post, headers, "x").status, 403) << headers;
    }
    for (const char* name :
         {"", "..", "../a.ifc", "a%2fb.ifc", "a%5Cb.ifc", ".a.ifc", "a%0ab.ifc", "%ff.ifc"}) {
        EXPECT_EQ(Ask(std::string("POST /pack?name=") + name, Origin(), "x").status, 400) << name;
    }
    EXPECT_EQ(Ask("POST /files/house.zvg?name=a.ifc", Origin(), "x").status, 404);
    const Client large(port);
    large.Send(post + " HTTP/1.1\r\nHost: " + host + "\r\n" + Origin() +
               "Content-Length: 2147483649\r\n\r\n");
    EXPECT_EQ(large.Answer().status, 413);

    // The name is taken by the file that is served already.
    const Response packed = Ask(post, Origin(), model);
    ASSERT_EQ(packed.status, 200) << packed.body;
    EXPECT_EQ(json::parse(packed.body), json({{"src", "/files/house-2.zvg"}}));
    EXPECT_EQ(Ask("GET /files/house-2.zvg").body, bytes);
    EXPECT_EQ(Ask("GET /files/house-2.zvg", "Range: bytes=4-9\r\n").body, bytes.substr(4, 6));

    for (const auto& [name, content] :
         {std::pair{"bad.ifc", "ISO-10303-21; nothing"},
          {"empty.ifc", ""},
          {"a.txt", "text"},
          {"a.gltf",
           R"({"asset":{"version":"2.0"},"buffers":[{"uri":"../house.zvg","byteLength":9}]})"}}) {
        const Response bad = Ask(std::string("POST /pack?name=") + name, Origin(), content);
        EXPECT_EQ(bad.status, 422) << name << bad.body;
        const std::string reason = json::parse(bad.body).value("error", "");
        EXPECT_NE(reason, "") << name;
        EXPECT_EQ(reason.find("tmp"), std::string::npos) << reason;
    }
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(ViewServer, SlowOnesHangNobodyAndAnEndLeavesNothing) {
    Serve({"house.zvg"});
    std::vector<std::unique_ptr<Client>> slow;
    for (int i = 0; i < 20; ++i) {
        slow.push_back(std::make_unique<Client>(port));
        slow.back()->Send("GET / HTTP/1.1\r\nHo");
    }
    const std::string post = "POST /pack?name=a.ifc HTTP/1.1\r\nHost: " + host + "\r\n" + Origin() +
                             "Content-Length: 1000\r\n\r\nISO-10303-21;";
    slow.push_back(std::make_unique<Client>(port));
    slow.back()->Send(post);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Ask("GET /files/house.zvg").body, bytes);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(10));
    for (int i = 0; i < 100 && NothingIsLeft(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_FALSE(NothingIsLeft()) << "the model that is on its way";
    EXPECT_EQ(Stop(SIGTERM), 0);
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(ViewServer, EndsWhileASilentImporterPacks) {
    std::ofstream(folder + "silent")
        << "#!/bin/sh\necho $$ >" << folder << "began\nexec sleep 60\n";
    fs::permissions(folder + "silent", fs::perms::owner_all);
    setenv("ZVG_IMPORT", (folder + "silent").c_str(), 1);
    Serve({});
    unsetenv("ZVG_IMPORT");
    const Client client(port);
    client.Send("POST /pack?name=a.ifc HTTP/1.1\r\nHost: " + host + "\r\n" + Origin() +
                "Content-Length: 1\r\n\r\nx");
    for (int i = 0; i < 200 && ReadAll(folder + "began").empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    const std::string importer = ReadAll(folder + "began");
    ASSERT_NE(importer, "");
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Stop(SIGINT), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
    EXPECT_EQ(kill(std::stoi(importer), 0), -1) << "it ends with the server";
    EXPECT_TRUE(NothingIsLeft());
}

}  // namespace
