// The factories of every dump record and the run-time view of the record table, both
// generated from the one table in DumpRecordTable.h.
#include <zol/dump/DumpRecordTable.h>

#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/dump/DumpRegistrationRecords.h>

namespace ZOL {

#define ZOL_DUMP_FACTORY(value, Name, tag) \
    DumpBase* CreateDump##Name() { return new Dump##Name(); }
ZOL_DUMP_RECORD_TABLE(ZOL_DUMP_FACTORY)
#undef ZOL_DUMP_FACTORY

const std::vector<DumpRecordRow>& GetDumpRecordRows() {
    static const std::vector<DumpRecordRow> rows = {
#define ZOL_DUMP_ROW(value, Name, tag) {value, "Dump" #Name, tag, &CreateDump##Name},
        ZOL_DUMP_RECORD_TABLE(ZOL_DUMP_ROW)
#undef ZOL_DUMP_ROW
    };
    return rows;
}

DumpBase* CreateDumpRecord(int apiName, const std::string& fileName) {
    // The exact-section record also answers these two values.
    if (DumpMeshMeasureSectionExact::AcceptsApiName(apiName)) {
        return CreateDumpMeshMeasureSectionExact();
    }
    // Value 11 names two records on purpose: the tag in the file name tells them apart.
    const DumpRecordRow* match = nullptr;
    for (const DumpRecordRow& row : GetDumpRecordRows()) {
        if (row.value != apiName) continue;
        if (fileName.find(row.tag) != std::string::npos) return row.create();
        if (match == nullptr) match = &row;
    }
    return match ? match->create() : nullptr;
}

}  // namespace ZOL
