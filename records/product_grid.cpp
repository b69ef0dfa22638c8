#include "records/product_grid.h"

#include "records/product_fields.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace mirelo {

ProductRowWriter::ProductRowWriter(const ProductGridShape &shape,
                                   std::span<const GridColumnLayout> layout,
                                   ProductPictures pictures, ProductGridFill &fill)
    : shape_(shape), layout_(layout), pictures_(pictures), fill_(fill) {}

GridCell &ProductRowWriter::cell(int col) {
    GridCell &target = fill_.rows.back().cells[col];
    target.alignment = layout_[col].cellAlignment;
    return target;
}

bool ProductRowWriter::writeRow(const platform::XmlNode &product) {
    fill_.rows.push_back({std::vector<GridCell>(shape_.Cols)});
    const int row = static_cast<int>(fill_.rows.size());
    fill_.gridRows = std::max(fill_.gridRows, row + 1);
    fill_.currentRow = row;

    GridCell &history = cell(shape_.HistoryIcon);
    if (ProductFlagIsSet(product, "AllergicHistory")) {
        history.picture = pictures_.allergyHistory;
    }
    // A warning hides a note: the triangle or the N, never both.
    bool warning = false;
    GridCell &warningOrNote = cell(shape_.WarningOrNoteIcon);
    if (ProductFlagIsSet(product, "Allergic")) {
        warningOrNote.picture = pictures_.warning;
        warning = true;
    } else if (!ProductField(product, "ExtendedMedicalInfo").empty()) {
        warningOrNote.picture = pictures_.note;
    }
    if (shape_.TickBox) {
        GridCell &tick = cell(*shape_.TickBox);
        tick.picture = ProductFlagIsSet(product, "Checked") ? pictures_.ticked : pictures_.unticked;
    }
    // The cell is formatted before its text is read, as the grid had it when a read failed.
    const auto writeText = [this](int col, const auto &read) {
        GridCell &target = cell(col);
        target.text = read();
    };
    const auto writeField = [&](int col, const char *name) {
        writeText(col, [&] { return ProductField(product, name); });
    };
    writeText(shape_.Product, [&] { return ProductDisplayName(product); });
    writeField(shape_.Prescribed, "PrescribedTimestamp");
    writeText(shape_.Repeats, [&] { return ProductRepeats(product); });
    writeText(shape_.Packages, [&] { return ProductPackages(product); });
    writeField(shape_.ID, "ID");
    writeField(shape_.ATC, "ATCcode");
    writeField(shape_.RegNr, "RegNr");
    writeField(shape_.Dosage, "UnstructuredDosageAdmin");
    return warning;
}

void ProductRowWriter::markDuplicateAtc(int count) {
    std::unordered_map<std::string_view, std::vector<int>> rowsByAtc;
    for (int row = 1; row <= count; ++row) {
        rowsByAtc[fill_.rows[row - 1].cells[shape_.ATC].text].push_back(row);
    }
    int latestWithTwin = 0;
    int itsLastTwin = 0;
    for (const auto &[code, rows] : rowsByAtc) {
        if (rows.size() < 2) {
            continue;
        }
        for (const int row : rows) {
            for (GridCell &each : fill_.rows[row - 1].cells) {
                each.foreColor = DuplicateAtcColor;
            }
        }
        if (rows[rows.size() - 2] > latestWithTwin) {
            latestWithTwin = rows[rows.size() - 2];
            itsLastTwin = rows.back();
        }
    }
    if (itsLastTwin != 0) {
        fill_.currentRow = itsLastTwin;
    }
}

platform::MsgBoxRequest SetupFlexGridFailureBox(const MireloError &error) {
    return {"Kunde inte skapa struktur för flexgrid: " + error.description(),
            platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo"};
}

RowMarking MarkingOfRow(int gridRows, int row) {
    if (gridRows < 2) {
        return RowMarking::Unchanged;
    }
    return row == 0 ? RowMarking::None : RowMarking::WholeRow;
}

std::optional<int> FirstRowWith(const ShownGrid &grid, int col, const std::string &wanted,
                                int lastRow) {
    for (int row = 1; row <= lastRow; ++row) {
        if (grid.text(row, col) == wanted) {
            return row;
        }
    }
    return std::nullopt;
}

RowSearch SearchById(const ShownGrid &grid, const std::string &id,
                     const std::function<std::optional<int>()> &find) {
    if (grid.rows < 2) {
        return {RowSearch::End::GridWithoutRows};
    }
    if (id.empty()) {
        return {RowSearch::End::EmptyId};
    }
    const std::optional<int> row = find();
    return row ? RowSearch{RowSearch::End::Found, *row} : RowSearch{RowSearch::End::NotFound};
}

} // namespace mirelo
