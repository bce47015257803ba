#include "Support.h"

#include <travik/fleet/ClickHouse.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <thread>

/// The sink of a ClickHouse server, against a server of the test's own: what is asked of it, and what its answers do.
namespace ClickHouseTest {

using namespace Travik;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

struct Request {
    std::string line; ///< "POST /PATH"
    std::string headers;
    std::string body;
};

struct Answer {
    std::string body;
    std::string status = "200 OK";
    std::size_t promised = 0; ///< more bytes than follow
};

/// Answers on a port of its own, first with what was handed over, then with nothing, and keeps what it was asked.
class Server {
public:
    explicit Server(std::deque<Answer> answers) : answers_(std::move(answers)) {
        ::setenv("no_proxy", "*", 1);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener_, any, size) != 0 || ::listen(listener_, 8) != 0 ||
            ::getsockname(listener_, any, &size) != 0)
            throw std::runtime_error("no port");
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        ::shutdown(listener_, SHUT_RDWR); // ends accept
        thread_.join();
        ::close(listener_);
    }

    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    /// What came since it was asked last.
    std::vector<Request> requests() {
        const std::lock_guard guard(lock_);
        return std::exchange(requests_, {});
    }

private:
    int listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
    unsigned int port_ = 0;
    std::thread thread_;
    std::mutex lock_;
    std::deque<Answer> answers_;
    std::vector<Request> requests_;

    void serve() {
        for (;;) {
            const int connection = ::accept(listener_, nullptr, nullptr);
            if (connection < 0)
                return;
            Request request = read(connection);
            Answer answer;
            {
                const std::lock_guard guard(lock_);
                requests_.push_back(std::move(request));
                if (!answers_.empty()) {
                    answer = std::move(answers_.front());
                    answers_.pop_front();
                }
            }
            const std::string text = "HTTP/1.1 " + answer.status + "\r\nConnection: close\r\nContent-Length: " +
                                     std::to_string(answer.body.size() + answer.promised) + "\r\n\r\n" + answer.body;
            for (std::size_t sent = 0; sent < text.size();) {
                const ssize_t some = ::send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
                if (some <= 0)
                    break;
                sent += static_cast<std::size_t>(some);
            }
            ::close(connection);
        }
    }

    static Request read(int connection) {
        constexpr std::string_view gap = "\r\n\r\n";
        constexpr std::string_view length = "Content-Length: ";
        std::string text;
        std::string some(65536, '\0');
        std::size_t wanted = std::string::npos;
        while (text.size() < wanted) {
            const ssize_t size = ::recv(connection, some.data(), some.size(), 0);
            if (size <= 0)
                break;
            text.append(some, 0, static_cast<std::size_t>(size));
            const std::size_t end = text.find(gap);
            if (end != std::string::npos)
                wanted = end + gap.size() + std::stoul(text.substr(text.find(length) + length.size()));
        }
        const std::size_t line = text.find("\r\n");
        const std::size_t end = text.find(gap);
        return {text.substr(0, text.find(" HTTP/")), text.substr(line + 2, end - line), text.substr(end + gap.size())};
    }
};

/// What a call throws.
template <class Call>
std::string thrown(Call call) {
    try {
        call();
    } catch (const FleetError& error) {
        return error.what();
    }
    return "nothing";
}

const Answer isThere{"1\n"};

TEST(ClickHouse, MakesTheTablesThatAreMissing) {
    Server server({{"0\n"}});
    const ClickHouse sink(server.address());
    const std::vector<Request> requests = server.requests();
    ASSERT_THAT(requests, SizeIs(1 + relationCount));
    std::string made;
    for (std::size_t i = 1; i < requests.size(); ++i)
        made += requests[i].body + ";\n";
    EXPECT_EQ(made, ClickHouse::schema());
    EXPECT_EQ(requests[0].body, "EXISTS TABLE images");
    EXPECT_EQ(requests[4].line, "POST /?database=default");
    // Of one server.
    EXPECT_THAT(made,
                HasSubstr("CREATE TABLE IF NOT EXISTS scalars(\n  image String,\n  module String,\n  block Int64"));
    EXPECT_THAT(made, HasSubstr("\n)\nENGINE = ReplacingMergeTree\nORDER BY (key, field, row, image, block);\n"));
    EXPECT_THAT(made, Not(HasSubstr("Distributed")));
}

TEST(ClickHouse, SaysWhoAsksAndOfWhichDatabase) {
    ::unsetenv("CLICKHOUSE_USER");
    ::unsetenv("CLICKHOUSE_PASSWORD");
    Server server({isThere, isThere, isThere});
    ClickHouse{server.address() + '/'};
    ::setenv("CLICKHOUSE_USER", "reader", 1);
    ClickHouse{"http://" + server.address() + "/fleet.Db-_9 \xC3\xA4&"};
    ::setenv("CLICKHOUSE_PASSWORD", "secret", 1);
    ClickHouse{"http://" + server.address()};
    const std::vector<Request> requests = server.requests();
    ASSERT_THAT(requests, SizeIs(3)); // where they are, no table is made
    EXPECT_EQ(requests[0].line, "POST /?database=default");
    EXPECT_EQ(requests[1].line, "POST /?database=fleet.Db-_9%20%C3%A4%26");
    EXPECT_THAT(requests[0].headers, Not(HasSubstr("X-ClickHouse")));
    EXPECT_THAT(requests[1].headers, HasSubstr("\r\nX-ClickHouse-User: reader\r\n"));
    EXPECT_THAT(requests[1].headers, Not(HasSubstr("X-ClickHouse-Key")));
    EXPECT_THAT(requests[2].headers, HasSubstr("\r\nX-ClickHouse-Key: secret\r\n"));
    for (const Request& request : requests)
        EXPECT_THAT(request.headers, Not(HasSubstr("Expect")));
}

TEST(ClickHouse, TellsWhatGoesWrong) {
    Server server({{"no such database\nand a stack\n", "404 Not Found"}, {"1", "200 OK", 5}, {"", "302 Found"}});
    const std::string address = server.address();
    const auto open = [&] { ClickHouse sink(address); };
    EXPECT_EQ(thrown(open), address + ": status 404: no such database");
    EXPECT_THAT(thrown(open), AllOf(testing::StartsWith(address + ": "), Not(HasSubstr("status")))); // cut off
    EXPECT_EQ(thrown(open), address + ": status 302: ");
    EXPECT_THAT(thrown([&] { ClickHouse sink("ftp://" + address); }), testing::StartsWith("ftp://" + address + ": "));
    EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST(ClickHouse, KnowsFilesByTheirPaths) {
    // The second line is of a path with every escape; the third is none.
    Server server({isThere,
                   {"a.bin\t131072\t1600000000000000001\t77\tabcd\t2\n"
                    "\\b\\f\\n\\r\\t\\0\\'\\\\\\\t-1\t0\t0\t\\\\x\t0\n"
                    "b.bin\t1\n"}});
    ClickHouse sink(server.address());
    const std::string odd = std::string("\b\f\n\r\t\0'\\", 8);
    std::vector<FoundFile> files(4);
    files[0].path = "b.bin";
    files[1].path = odd + '\\';
    files[2].path = "it's\\";
    files[3].path = "a.bin";
    server.requests();
    const std::vector<std::optional<FleetSink::Known>> known = sink.known(files);
    const std::vector<Request> requests = server.requests();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_THAT(requests[0].body,
                HasSubstr(" FROM images WHERE path IN ('b.bin','" + std::string("\b\f\n\r\t\0\\'\\\\\\\\", 12) +
                          "','it\\'s\\\\','a.bin') GROUP BY path FORMAT TabSeparated"));
    ASSERT_THAT(known, SizeIs(4));
    EXPECT_FALSE(known[0] || known[2]);
    ASSERT_TRUE(known[1] && known[3]);
    EXPECT_EQ(known[1]->stamp, (FileStamp{-1, 0, 0}));
    EXPECT_EQ(known[1]->contentHash, "\\x");
    EXPECT_EQ(known[3]->stamp, (FileStamp{131072, 1600000000000000001, 77}));
    EXPECT_EQ(known[3]->contentHash, "abcd");
    EXPECT_EQ(known[3]->problems, 2);
    EXPECT_FALSE(known[3]->hasVanished);
}

// A server refuses a query of more than 256 KiB.
TEST(ClickHouse, AsksOfManyFilesInShortQueries) {
    Server server({isThere, {}, {"last\t1\t2\t3\th\t0\n"}});
    ClickHouse sink(server.address());
    std::vector<FoundFile> files(151);
    for (std::size_t i = 0; i < 150; ++i)
        files[i].path = std::string(997, 'x') + std::to_string(100 + i);
    files.back().path = "last";
    server.requests();
    EXPECT_TRUE(sink.known(files).back());
    const std::vector<Request> requests = server.requests();
    ASSERT_THAT(requests, SizeIs(2));
    EXPECT_THAT(requests[0].body, HasSubstr("100','"));
    EXPECT_THAT(requests[0].body, HasSubstr("199')"));
    EXPECT_THAT(requests[1].body, HasSubstr("IN ('xxx"));
    EXPECT_THAT(requests[1].body, HasSubstr("249','last')"));
    sink.known({});
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST(ClickHouse, BringsABatchOnce) {
    ImageRows rows;
    rows.path = "a.bin";
    rows.contentHash = "00ff";
    rows.module = "1141.3000.02/1";
    for (std::size_t r = 0; r < relationCount; ++r) {
        const std::span<const FleetColumn> columns = fleetRelations()[r].columns;
        if (static_cast<Relation>(r) == Relation::Scalars)
            continue; // there are images without
        FleetRow& row = rows.rows[r].emplace_back();
        for (const FleetColumn& column : columns) {
            if (column.kind == ColumnKind::Numbers)
                row.emplace_back(ArrayText{"[1,null,null]"});
            else if (column.kind == ColumnKind::Texts)
                row.emplace_back(ArrayText{"[\"null\"]"});
            else
                row.emplace_back();
        }
    }
    ImageRows other = rows;
    other.path = "b.bin";
    const std::string key = rows.key();
    Server server({isThere, {other.key() + '\n'}});
    ClickHouse sink(server.address());
    sink.store(other);
    sink.begin(); // what was not committed is gone
    server.requests();
    for (const ImageRows* one : {&rows, &other, &rows})
        EXPECT_EQ(sink.store(*one), FleetSink::Stored::Added);
    EXPECT_THAT(server.requests(), IsEmpty());
    sink.commit();
    const std::vector<Request> requests = server.requests();
    ASSERT_THAT(requests, SizeIs(4));
    EXPECT_EQ(requests[0].body, "SELECT DISTINCT image FROM images WHERE image IN ('" + key + "','" + other.key() +
                                    "','" + key + "') FORMAT TabSeparated");
    const auto into = [](const std::string& relation) {
        return "POST /?insert_distributed_sync=1&database=default&query=INSERT%20INTO%20" + relation +
               "%20FORMAT%20JSONEachRow";
    };
    EXPECT_EQ(requests[1].line, into("curves"));
    EXPECT_EQ(requests[2].line, into("blocks"));
    EXPECT_EQ(requests[3].line, into("images")); // one that is there is complete
    const auto keys = [](const std::string& lines) {
        std::vector<std::string> found;
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);)
            found.push_back(line.substr(line.find(':') + 2, 32));
        return found;
    };
    EXPECT_THAT(keys(requests[1].body), ElementsAre(key));
    EXPECT_THAT(keys(requests[2].body), ElementsAre(key));
    EXPECT_THAT(keys(requests[3].body), ElementsAre(key, other.key(), key));
    // No null in an array of numbers; a text is left as it is.
    EXPECT_THAT(requests[1].body, HasSubstr(":[1,nan,nan]"));
    EXPECT_THAT(requests[3].body, HasSubstr(":[\"null\"]"));
    sink.commit();
    EXPECT_THAT(server.requests(), IsEmpty());
}

} // namespace ClickHouseTest
