// The test catalogue, its menus and the options.
#include "app/ui/Form1.h"

#include "app/core/Catalogue.h"
#include "app/core/Options.h"
#include "app/ui/About.h"
#include "app/ui/ConfigWizard.h"
#include "app/ui/Trap.h"
#include "common/core/SafeFile.h"
#include "common/ui/Widgets.h"
#include "progress/core/ScoreSlots.h"
#include "questions/core/Cipher.h"

#include <QAction>
#include <QPointer>

#include <algorithm>

namespace kesta {

namespace {

// The same scan serves the menus and the load items, so their indices meet.
std::vector<CatalogueHit> scanFolder(Form1& form, const std::string& folderspec, std::vector<std::string> names)
{
    return classifyFiles(folderspec, names, [&form](const std::string& path) { return form.GetTitle(path); });
}

void showItem(QAction* item, const std::string& caption)
{
    item->setText(ui::literalCaption(QString::fromStdString(caption)));
    item->setVisible(true);
}

} // namespace

void Form1::Create_Menu()
{
    trap("Create_Menu()", [&] { GetFolderList(state_.folders.questionFolder()); });
}

void Form1::GetFolderList(const std::string& folderspec)
{
    trap("GetFolderList()", [&] {
        const std::vector<CatalogueHit> hits = scanFolder(*this, folderspec, listFolderFiles(folderspec));
        fillCatalogues(state_.catalogues, hits);
        for (const CatalogueHit& hit : hits) {
            const auto i = static_cast<std::size_t>(hit.index);
            if (hit.kind == CatalogueKind::Exam) {
                showItem(Chapter1[i], hit.title);
                showItem(ch01[i], hit.title);
            } else {
                showItem(Review1[i], hit.title);
                showItem(r01[i], hit.title);
            }
        }
    });
}

std::string Form1::GetTitle(const std::string& filename)
{
    std::string title;
    trap("GetTitle()", [&] {
        // A file the loader would refuse has no title, so it is offered as no test.
        if (const std::optional<std::string> line = titleLine(filename))
            title = DecryptString(*line, std::string(QuestionPassPhrase));
    });
    return title;
}

void Form1::Adjust_Menu()
{
    trap("Adjust_Menu()", [&] {
        ch01[0]->setEnabled(false);
        mnuScore01[0]->setEnabled(false);
        ResetScoreMenu();
        Enable_Mnu_Items();
    });
}

void Form1::Enable_Mnu_Items()
{
    trap("Enable_Mnu_Items()", [&] {
        const std::string folderspec = state_.folders.questionFolder();
        const std::string userFolder = state_.folders.DataDir + "/User/";
        std::vector<CatalogueHit> hits = scanFolder(*this, folderspec, listFolderFiles(folderspec));
        // A copy killed while it rotated a test's scores left them for the next one to finish.
        std::vector<std::string> baseNames;
        for (const CatalogueHit& hit : hits)
            baseNames.push_back(hit.fileName + ".usr");
        settleScores(userFolder, baseNames);
        // The score menu lists every exam's scores before any quiz's, whatever the folder order.
        std::stable_partition(hits.begin(), hits.end(),
                              [](const CatalogueHit& hit) { return hit.kind == CatalogueKind::Exam; });
        for (const CatalogueHit& hit : hits) {
            const bool exam = hit.kind == CatalogueKind::Exam;
            const CatalogueEntry& entry =
                exam ? state_.catalogues.ExamCatalogue[hit.index] : state_.catalogues.QuizCatalogue[hit.index];
            const std::string saved = userFolder + hit.fileName + ".usr";
            Check_File(saved);
            if (state_.catalogues.FileFound) {
                QAction* item = (exam ? ch01 : r01)[static_cast<std::size_t>(hit.index)];
                item->setEnabled(true);
                showItem(item, entry.Title);
            }
            for (int k = 1; k <= 5; ++k)
                Check_File_ViewScore(saved + ".score" + std::to_string(k), entry.Title);
        }
    });
}

void Form1::Check_File(const std::string& file_to_check)
{
    state_.catalogues.FileFound = safefile::hasContent(file_to_check);
}

void Form1::ReadOptions()
{
    kesta::ReadOptions(app_.host, state_.folders, state_.options);
}

void Form1::mnuOptions_Click()
{
    trap("mnuOptions_Click()", [&] {
        ReadOptions();
        QPointer<Config_Wizard_01> wizard = new Config_Wizard_01(app_, this);
        wizard->Form_Load();
        app_.host.execModal(*wizard);
        App::unload(wizard);
    });
}

void Form1::AboutItem_Click()
{
    trap("AboutItem_Click()", [&] {
        QPointer<frmAbout> about = new frmAbout(app_, this);
        about->Form_Load();
        app_.host.execModal(*about);
        App::unload(about);
    });
}

} // namespace kesta
