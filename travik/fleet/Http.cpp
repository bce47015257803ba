#include "Http.h"

#include <travik/fleet/Relations.h>

#include <curl/curl.h>
#include <dlfcn.h>

#include <array>

namespace Travik::http {

namespace {

/// What is used of the library.
struct Library {
    decltype(&curl_global_init) globalInit;
    decltype(&curl_easy_init) init;
    decltype(&curl_easy_setopt) set;
    decltype(&curl_easy_perform) perform;
    decltype(&curl_easy_getinfo) info;
    decltype(&curl_easy_cleanup) cleanup;
    decltype(&curl_slist_append) append;
    decltype(&curl_slist_free_all) freeAll;
};

template <class Function>
void find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    if (!function)
        throw FleetError(std::string("libcurl has no ") + name);
}

const Library& library() {
    static const Library loaded = [] {
        void* const handle = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
        if (!handle)
            throw FleetError("an HTTP server needs libcurl, which cannot be loaded (Debian: libcurl4)");
        Library made{};
        find(handle, "curl_global_init", made.globalInit);
        find(handle, "curl_easy_init", made.init);
        find(handle, "curl_easy_setopt", made.set);
        find(handle, "curl_easy_perform", made.perform);
        find(handle, "curl_easy_getinfo", made.info);
        find(handle, "curl_easy_cleanup", made.cleanup);
        find(handle, "curl_slist_append", made.append);
        find(handle, "curl_slist_free_all", made.freeAll);
        made.globalInit(CURL_GLOBAL_DEFAULT); // where it fails, no handle is made either
        return made;
    }();
    return loaded;
}

std::size_t append(char* data, std::size_t /*one*/, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(data, count);
    return count;
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

} // namespace

struct Client::Handle {
    CURL* curl = library().init();
    curl_slist* headers = nullptr;
    std::array<char, CURL_ERROR_SIZE> error{};

    Handle() = default;
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    void add(const std::string& header) {
        curl_slist* const longer = library().append(headers, header.c_str());
        if (!longer)
            throw std::bad_alloc();
        headers = longer;
    }
    ~Handle() {
        library().freeAll(headers);
        library().cleanup(curl);
    }
};

Client::Client(std::string address, const std::string& user, const std::string& password)
    : address_(std::move(address)), handle_(std::make_unique<Handle>()) {
    const Library& api = library();
    CURL* const curl = handle_->curl;
    if (!curl)
        throw std::bad_alloc();
    constexpr long connectSeconds = 10;
    constexpr long idleSeconds = 300;
    if (!user.empty())
        handle_->add("X-ClickHouse-User: " + user);
    if (!password.empty())
        handle_->add("X-ClickHouse-Key: " + password);
    handle_->add("Expect:"); // else a large body waits for a second
    api.set(curl, CURLOPT_HTTPHEADER, handle_->headers);
    api.set(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    api.set(curl, CURLOPT_NOSIGNAL, 1L);
    api.set(curl, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    api.set(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
    api.set(curl, CURLOPT_LOW_SPEED_TIME, idleSeconds);
    api.set(curl, CURLOPT_ERRORBUFFER, handle_->error.data());
    api.set(curl, CURLOPT_WRITEFUNCTION, &append);
    api.set(curl, CURLOPT_POST, 1L);
}

Client::~Client() = default;

std::string Client::post(const std::string& path, std::string_view body) {
    const Library& api = library();
    CURL* const curl = handle_->curl;
    const std::string url = (address_.find("://") == std::string::npos ? "http://" : "") + address_ + path;
    std::string answer;
    handle_->error[0] = '\0';
    api.set(curl, CURLOPT_URL, url.c_str());
    api.set(curl, CURLOPT_POSTFIELDS, body.data());
    api.set(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    api.set(curl, CURLOPT_WRITEDATA, &answer);
    if (api.perform(curl) != CURLE_OK)
        throw FleetError(address_ + ": " + handle_->error.data());
    constexpr long fine = 200;
    long status = 0;
    api.info(curl, CURLINFO_RESPONSE_CODE, &status);
    if (status != fine)
        throw FleetError(address_ + ": status " + std::to_string(status) + ": " + firstLine(answer));
    return answer;
}

std::string Client::escaped(std::string_view text) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string escaped;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        const bool isPlain = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
                             (code >= 'a' && code <= 'z') || code == '-' || code == '_' || code == '.';
        if (isPlain)
            escaped += character;
        else
            escaped.append("%").append(1, digits[code >> 4U]).append(1, digits[code & 15U]);
    }
    return escaped;
}

} // namespace Travik::http
