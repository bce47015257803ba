#include "Jobs.h"
#include "Terminal.h"

#include <travik/fleet/ClickHouse.h>
#include <travik/fleet/Collect.h>
#include <travik/fleet/FleetDatabase.h>
#include <travik/fleet/JsonLines.h>

#include <iostream>

namespace Tool {

namespace {

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

class Collect : public Command {
public:
    explicit Collect(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("collect", "Bring the values of any number of images into a database");
        addImagesOption(command, paths_);
        command.get_option("image")->description("Module images, and folders that hold them at any depth");
        CLI::Option* const into =
            command.add_option("--into", database_, "The SQLite database, made where there is none; see docs/fleet.md")
                ->type_name("FILE");
        CLI::Option* const server =
            command
                .add_option("--clickhouse", server_,
                            "The HTTP interface of a ClickHouse server, alone or of a cluster; CLICKHOUSE_USER and "
                            "CLICKHOUSE_PASSWORD say who asks")
                ->type_name("HOST:PORT[/DATABASE]")
                ->excludes(into);
        CLI::Option* const format =
            command.add_option("--format", format_, "jsonl: write a relation to standard output, an object a line")
                ->check(CLI::IsMember({"jsonl"}))
                ->type_name("jsonl")
                ->excludes(into)
                ->excludes(server);
        std::vector<std::string> names;
        for (const Travik::FleetRelation& relation : Travik::fleetRelations())
            names.emplace_back(relation.name);
        command.add_option("--relation", relation_, "Which: images, blocks, scalars or curves")
            ->check(CLI::IsMember(names))
            ->type_name("NAME")
            ->needs(format);
        addJobsOption(command, jobs_);
        command.footer("What has not changed since the last run is not read again; what vanished is marked.\n"
                       "Files that are no images are counted. A damaged image is collected, told, and makes the exit\n"
                       "status 1; so does a file named here that is no image.");
    }

    int run() override {
        if (database_.empty() && format_.empty() && server_.empty()) {
            std::cerr << "datablock: collect needs --into, --clickhouse or --format\n";
            return CallFailed;
        }
        if (!format_.empty()) {
            Travik::JsonLines lines(Travik::findRelation(relation_)->relation, [](std::string_view text) {
                if (!(std::cout << text))
                    throw Travik::FleetError("standard output");
            });
            return collect(lines);
        }
        if (!server_.empty()) {
            Travik::ClickHouse server(server_);
            return collect(server);
        }
        Travik::FleetDatabase database(database_, Travik::FleetDatabase::Access::Write);
        return collect(database);
    }

private:
    std::vector<std::string> paths_;
    std::string database_;
    std::string server_;
    std::string format_;
    std::string relation_ = "images";
    unsigned int jobs_ = 1;

    int collect(Travik::FleetSink& sink) const {
        Progress progress;
        Travik::CollectOptions options;
        options.jobs = jobs_;
        options.tell = [&](const Travik::CollectNews& news) {
            progress.hide();
            tell(news);
        };
        options.progress = [&](const Travik::CollectCounts& counts) { progress.show(counts.images + counts.aliens); };
        const Travik::CollectCounts counts = Travik::collect(paths_, sink, options);
        progress.hide();
        std::cerr << summary(counts) << '\n';
        if (counts.unreadable > 0)
            return CallFailed;
        return counts.damaged + counts.namedAliens > 0 ? DataWrong : AllWell;
    }

    static void tell(const Travik::CollectNews& news) {
        using enum Travik::CollectNews::Kind;
        if (news.kind == Unreadable)
            std::cerr << "datablock: ";
        std::cerr << InLine{news.path} << ": ";
        if (news.kind == Alien)
            std::cerr << "no image: ";
        std::cerr << InLine{news.text};
        if (news.problems > 1)
            std::cerr << " (and " << counted(news.problems - 1, "more problem", "more problems") << ')';
        std::cerr << '\n';
    }

    static std::string summary(const Travik::CollectCounts& counts) {
        std::string text = counted(counts.images, "image", "images") + ": " + std::to_string(counts.added) +
                           " added, " + std::to_string(counts.changed) + " changed, " +
                           std::to_string(counts.unchanged) + " unchanged";
        const auto add = [&](std::size_t count, std::string_view what) {
            if (count > 0)
                text.append("; ").append(std::to_string(count)).append(" ").append(what);
        };
        add(counts.returned, "returned");
        add(counts.vanished, "vanished");
        add(counts.damaged, "damaged");
        add(counts.aliens, counts.aliens == 1 ? "file is no image" : "files are no images");
        add(counts.unreadable, "unreadable");
        add(counts.seenFolders,
            counts.seenFolders == 1 ? "link to a folder walked before" : "links to folders walked before");
        return text;
    }
};

} // namespace

std::unique_ptr<Command> collectCommand(CLI::App& app) { return std::make_unique<Collect>(app); }

} // namespace Tool
