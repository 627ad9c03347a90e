#include "tools/moradmin/session.h"

#include "dwgfs/names.h"
#include "frame/message_system.h"
#include "platform/runtime.h"
#include "space/global_view.h"
#include "tools/moradmin/damage/salvage_apply.h"
#include "tools/moradmin/damage/salvage_plan.h"
#include "tools/moradmin/damage/store_walk.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/running/private_files.h"
#include "tools/moradmin/running/progress.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace mor::tool {

std::string damagePlace(const host::Damage& damage) {
    const std::string at = damage.places == 0 ? "at byte " + std::to_string(damage.offset)
                           : damage.places == 1
                               ? "in one place"
                               : "in " + std::to_string(damage.places) + " places, first";
    return at + ": " + damage.text;
}

namespace {

constexpr std::size_t kMostNeighbours = 10000;

bool s_sawDamage = false;

/// What may have been meant by the name of a file that is not there.
std::string otherFileHint(const std::string& file) {
    std::error_code code;
    if (std::filesystem::exists(file + ".bak", code))
        return "; " + file + ".bak is there, what was saved over last";
    const std::filesystem::path path(file);
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    std::vector<std::string> names;
    for (std::filesystem::directory_iterator at(folder, code), end; !code && at != end;
         at.increment(code)) {
        if (names.size() == kMostNeighbours) break;
        names.push_back(at->path().filename().string());
    }
    const std::string near = nearest(path.filename().string(), names);
    if (near.empty()) return {};
    const std::string shown = path.has_parent_path() ? (folder / near).string() : near;
    return "; did you mean \"" + shown + "\"?";
}

/// What of a damaged drawing cannot be read, and what else there is.
std::string damageOf(const std::string& file, const host::Damage& damage) {
    std::string text =
        file + (damage.line == 0 ? "" : ":" + std::to_string(damage.line)) +
        ": the drawing is damaged " + damagePlace(damage) +
        (damage.places != 0 ? "; all else is read" : "; what stands before that is read");
    std::error_code code;
    if (std::filesystem::exists(file + ".bak", code))
        text += "; " + file + ".bak is what was there before its last save";
    return text;
}

/// A damaged drawing is told about, and read as far as it goes.
AcApDocument* opened(const std::string& file, host::Opening opening = host::Opening::AsItIs) {
    std::error_code code;
    const std::string real = drawingFile(file);
    if (std::filesystem::status(real, code).type() == std::filesystem::file_type::not_found)
        throw Failure(kUnreadable, file + ": there is no such file" + otherFileHint(file), file);
    nowDoing("loading " + file);
    const auto document = host::openDocument(real, opening);
    nowDoing("");
    if (!document) {
        host::Error error = document.error();
        if (error.file == real) error.file = file;
        if (std::filesystem::is_directory(real, code))
            error.text += "; -r takes the drawings in it, where a command takes several";
        else if (std::filesystem::exists(file + ".bak", code))
            error.text += "; " + file + ".bak is what was there before its last save";
        throw Failure(error);
    }
    if (const auto damage = host::documentInfo(document.value()).damage) {
        s_sawDamage = true;
        printNote(damageOf(file, *damage));
    }
    return document.value();
}

}  // namespace

void refuseOtherForm(const std::string& output, std::string_view form) {
    const std::filesystem::path path = output;
    const auto named = [&path](std::wstring_view ending) {
        return equalNoCase(path.extension().wstring(), ending);
    };
    const bool drawing = form == "DWG";
    if (!named(drawing ? L".dxf" : L".dwg")) return;
    throw Failure(kUsage,
                  output + ": the drawing is " + (drawing ? "DWG" : "DXF") +
                      " and is not converted; choose a name such as " + path.stem().string() +
                      (drawing ? ".dwg" : ".dxf"),
                  output);
}

bool takeSawDamage() { return std::exchange(s_sawDamage, false); }

std::string Session::placeOf(const host::SavedEdit& edit) const {
    for (const host::RecordAttribute& item : host::recordAttributes(m_document, edit.name).items)
        if (item.name == kInfoAttribute) return utf8(host::stringOf(item.value));
    return edit.what;
}

Session::Session(const std::string& file, host::Opening opening)
    : m_file(file), m_document(opened(file, opening)), m_passage(m_document, file) {
    activate();
}

void Session::refuseUnwritable(const Options& options) const {
    const host::DocumentInfo info = host::documentInfo(m_document);
    const bool old = info.release < host::kFirstWithValues;
    if (!info.unwritable.empty()) throw Failure(kUnwritable, message(info.unwritable), m_file);
    if (info.damage && info.damage->places != 0)
        throw Failure(kUnwritable,
                      message("the drawing is damaged and cannot be saved over; let the CAD "
                              "program recover it first"),
                      m_file);
    // There may be no more to mend than the drawing itself.
    const bool mending = options.command == "repair";
    if (info.damage && (!old || mending))
        throw Failure(kUnwritable,
                      message("the drawing is damaged and cannot be saved over; "
                              "--salvage-drawing -o FILE writes what can be read of it"),
                      m_file);
    if (old && !(mending && options.salvageDrawing))
        throw Failure(kUnwritable,
                      message("drawings of " + host::releaseName(info.release) +
                              " hold no values; save the drawing as R12 or later"),
                      m_file);
    if (options.salvageDrawing && options.output.empty())
        throw Failure(kUsage,
                      "--salvage-drawing wants -o FILE: a damaged drawing is kept as it is");
}

Session::Session(const Options& options)
    : Session(options.drawing,
              options.salvageDrawing ? host::Opening::Salvaged : host::Opening::AsItIs) {
    if (!options.inside.empty()) m_passage.enter(options.inside);
}

void Session::activate() const {
    host::setCurrentDocument(m_document);
    host::setActiveDocument(m_document);
}

void Session::forget() {
    m_state.reset();
    m_made = false;
    m_outdated = false;
    m_store.reset();
}

void Session::noteStored() {
    m_made = true;
    m_outdated = m_state.has_value();
}

Session::~Session() {
    m_store.reset();
    activate();
    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    host::closeDocument(m_document);
}

void Session::learn() {
    if (m_state && !m_outdated) return;
    m_outdated = false;
    const bool own = reference().empty();
    // The records of the reference are those of its own file.
    AcApDocument* const document = own ? m_document : opened(m_passage.file());
    m_state = walkStore(document);
    m_info = host::documentInfo(document);
    if (!own) host::closeDocument(document);
}

const StoreState& Session::state() {
    learn();
    return *m_state;
}

StoreState Session::takeState() {
    learn();
    StoreState taken = std::move(*m_state);
    forget();
    return taken;
}

const host::DocumentInfo& Session::info() {
    learn();
    return *m_info;
}

void Session::refuseDamagedStore() {
    if (m_outdated) return;  // it was sound, or nothing had been stored
    if (state().firstStopping() != nullptr && reference().empty() &&
        host::documentInfo(m_document).damage)
        mendForReading();
    if (const Finding* finding = state().firstStopping())
        throw Failure(
            kDamaged,
            (reference().empty() ? m_file : m_passage.file()) +
                ": the store is damaged, nothing was done: " + finding->message + " (" +
                finding->code +
                "); \"moradmin check\" lists all findings, \"moradmin repair\" mends them",
            utf8(finding->path));
}

void Session::mendForReading() {
    const StoreState before = takeState();
    for (const Finding& finding : before.findings)
        if (finding.stops)
            printNote(
                message(utf8(finding.path) + ": " + finding.message + " (" + finding.code + ")"));
    for (const std::string& line : applySalvage(*this, before, planSalvage(*this, before)))
        printNote(message("to show what is there, in memory alone: " + line));
    forget();
}

const StoreState& Session::safeState() {
    refuseDamagedStore();
    return state();
}

bool Session::hasDirectories() {
    if (m_outdated) return true;
    return safeState().kind == StoreState::Kind::Sound || m_made;
}

std::unique_ptr<Store> Session::freshStore() {
    return std::make_unique<Store>(*CMORCadView::getTheGlobalObject());
}

Store& Session::store() {
    if (!m_store) m_store = freshStore();
    return *m_store;
}

bool Session::isUnacknowledgedDwg(const Options& options) const {
    const char* known = std::getenv("MORADMIN_EXPERIMENTAL_DWG");
    return host::documentInfo(m_document).form == "DWG" && !options.experimentalDwg &&
           (known == nullptr || *known == '\0');
}

host::SaveReport Session::save(const Options& options) {
    refuseOtherForm(options.output, host::documentInfo(m_document).form);
    if (isUnacknowledgedDwg(options) && !options.dryRun)
        printNote(
            message("writing DWG was tested with open readers only, no strict judge of the "
                    "form was at hand; the old file is kept as a backup "
                    "(--experimental-dwg says that you know)"));
    host::SaveOptions how;
    how.output = options.output;
    how.before = options.outputBefore;
    how.backup = !options.noBackup || isUnacknowledgedDwg(options);
    how.dryRun = options.dryRun;
    refuseLostReadings();
    nowDoing((options.dryRun ? "comparing " : "saving ") + m_file);
    auto saved = host::saveDocument(m_document, how);
    nowDoing("");
    if (!saved) throw Failure(saved.error());
    if (!saved.value().warning.empty()) printNote(message(saved.value().warning));
    return std::move(saved.value());
}

}  // namespace mor::tool
