#pragma once

#include "drop/DropActionsService.h"
#include "platform/ChildProcesses.h"
#include "platform/ImageConverter.h"
#include "platform/LocalPath.h"
#include "platform/Platform.h"
#include "platform/Sharing.h"
#include "platform/Volumes.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

#include <deque>
#include <memory>
#include <utility>

namespace velmora
{

/// Platform roles that only write down what they are asked, in one list, and answer what a test
/// has prepared, each in a turn of its own.
class FakeDropRoles
{
public:
    QStringList calls;

    QStringList failures;              ///< taken one by one by the calls on files; empty: no error
    QList<ImageOutcome> imageOutcomes; ///< taken one by one; none left: written
    QList<ProcessOutcome> processes;   ///< taken one by one; none left: ended well
    QList<Application> applications;
    std::optional<Application> player;
    QList<bool> ejections;
    QByteArray takenPath; ///< for which alone `placeItem` has to count

    [[nodiscard]] DropRoles roles()
    {
        return {m_files, m_images, m_processes, m_applications, m_volumes, m_sharing};
    }

    /// Makes roles of a platform that has to be gone before this is.
    void install(Platform &platform)
    {
        platform.files = std::make_unique<Files>(*this);
        platform.images = std::make_unique<Images>(*this);
        platform.processes = std::make_unique<Processes>(*this);
        platform.applications = std::make_unique<Apps>(*this);
        platform.volumes = std::make_unique<Disks>(*this);
        platform.sharing = std::make_unique<Share>(*this);
    }

    /// Lets all answers come, and what follows from them.
    void settle()
    {
        do {
            QCoreApplication::sendPostedEvents();
            if (!m_answers.empty()) {
                const auto answer = std::move(m_answers.front());
                m_answers.pop_front();
                answer();
            }
            QCoreApplication::sendPostedEvents();
        } while (!m_answers.empty());
    }

    [[nodiscard]] QStringList takeCalls() { return std::exchange(calls, {}); }

private:
    static QString names(const QList<QUrl> &urls)
    {
        QStringList names;
        for (const QUrl &url : urls) {
            names << name(url);
        }
        return names.join(QLatin1Char(' '));
    }
    static QString name(const QUrl &url) { return shown(localPath(url).value_or(url.toEncoded())); }
    /// Names that nobody can foresee are written as HIDDEN.
    static QString shown(const QByteArray &text)
    {
        static const QRegularExpression random(QStringLiteral("\\.velmora-\\w+"));
        return QString::fromUtf8(text).replace(random, QStringLiteral("HIDDEN"));
    }
    [[nodiscard]] std::optional<QString> failure()
    {
        const QString text = failures.isEmpty() ? QString() : failures.takeFirst();
        return text.isEmpty() ? std::nullopt : std::optional(text);
    }
    template<typename Done, typename... Values>
    void answer(const Done &done, Values... values)
    {
        m_answers.emplace_back([done, values...] { done(values...); });
    }

    template<typename Role>
    struct Part : Role {
        explicit Part(FakeDropRoles &all)
            : fake(all)
        {
        }
        FakeDropRoles &fake;
    };

    struct Files final : Part<FileActions> {
        using Part::Part;
        void createFolder(const QUrl &folder, Done done) override
        {
            fake.calls << QStringLiteral("mkdir ") + name(folder);
            fake.answer(done, fake.failure());
        }
        void copyItems(const QList<QUrl> &items, const QUrl &folder, NameRule, Done done) override
        {
            fake.calls << QStringLiteral("copy ") + names(items) + QStringLiteral(" to ") +
                              name(folder);
            fake.answer(done, fake.failure());
        }
        void moveItems(const QList<QUrl> &items, const QUrl &folder, NameRule, Done done) override
        {
            fake.calls << QStringLiteral("move ") + names(items) + QStringLiteral(" to ") +
                              name(folder);
            fake.answer(done, fake.failure());
        }
        void trashItems(const QList<QUrl> &items, Done done) override
        {
            fake.calls << QStringLiteral("trash ") + names(items);
            fake.answer(done, fake.failure());
        }
        void findLinks(const QList<QUrl> &items, Answer<ArchiveItems> done) override
        {
            fake.answer(done, std::nullopt, ArchiveItems{{}, items});
        }
        void placeItem(const QUrl &item, const QUrl &wanted, NameRule rule,
                       Answer<QUrl> done) override
        {
            fake.calls << QStringLiteral("place ") + name(item) + QStringLiteral(" as ") +
                              name(wanted);
            const QByteArray path = localPath(wanted).value();
            const int attempt = path == fake.takenPath ? 1 : 0;
            fake.answer(done, fake.failure(),
                        fileUrl(parentFolder(path) + '/' + rule(fileName(path), attempt)));
        }
        void discardItem(const QUrl &item) override
        {
            fake.calls << QStringLiteral("discard ") + name(item);
        }
    };

    struct Images final : Part<ImageConverter> {
        using Part::Part;
        void convert(const QUrl &source, const ImageEncoding &encoding, const QUrl &target,
                     NameRule, Done done) override
        {
            fake.calls << QStringLiteral("convert %1 to %2 as %3 %4")
                              .arg(name(source), name(target), QString::fromLatin1(encoding.format))
                              .arg(encoding.quality.value_or(-1));
            fake.answer(done, fake.imageOutcomes.isEmpty()
                                  ? ImageOutcome{ImageOutcome::Result::Written, {}}
                                  : fake.imageOutcomes.takeFirst());
        }
    };

    struct Processes final : Part<ChildProcesses> {
        using Part::Part;
        void run(const Command &command, Done done) override
        {
            fake.calls << shown(command.executable + ' ' + command.arguments.join(' ') +
                                (command.input.isEmpty() ? QByteArray() : " < " + command.input));
            fake.answer(done,
                        fake.processes.isEmpty() ? ProcessOutcome() : fake.processes.takeFirst());
        }
    };

    struct Apps final : Part<Applications> {
        using Part::Part;
        void open(const QUrl &url) override { fake.calls << QStringLiteral("open ") + name(url); }
        void open(const QList<QUrl> &files, const Application &application) override
        {
            fake.calls << QStringLiteral("open ") + names(files) + QStringLiteral(" in ") +
                              application.id;
        }
        void findForFile(const QUrl &file,
                         std::function<void(const QList<Application> &)> done) override
        {
            fake.calls << QStringLiteral("who opens ") + name(file);
            fake.answer(done, fake.applications);
        }
        void findByIdentifier(const QString &identifier,
                              std::function<void(const std::optional<Application> &)> done) override
        {
            fake.calls << QStringLiteral("who is ") + identifier;
            fake.answer(done, fake.player);
        }
    };

    struct Disks final : Part<Volumes> {
        using Part::Part;
        void ejectVolumeOf(const QUrl &file, std::function<void(bool)> done) override
        {
            fake.calls << QStringLiteral("eject ") + name(file);
            fake.answer(done, !fake.ejections.isEmpty() && fake.ejections.takeFirst());
        }
    };

    struct Share final : Part<Sharing> {
        using Part::Part;
        void send(const QList<QUrl> &files) override
        {
            fake.calls << QStringLiteral("send ") + names(files);
        }
    };

    std::deque<std::function<void()>> m_answers;
    Files m_files{*this};
    Images m_images{*this};
    Processes m_processes{*this};
    Apps m_applications{*this};
    Disks m_volumes{*this};
    Share m_sharing{*this};
};

} // namespace velmora
