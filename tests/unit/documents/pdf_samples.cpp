#include "unit/documents/pdf_samples.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>
#include <sstream>

#include "base/format.h"

namespace quirepress {
using Objects = PdfBodies;

std::string MakePdf(int pages, int fan) {
    Objects objects = {{1, "<< /Type /Catalog /Pages 2 0 R >>"}, {2, ""}};
    std::string nodes;
    int next = 3;
    for (int first = 0; first < pages; first += fan) {
        const int count = std::min(fan, pages - first);
        const int node = next++;
        std::string kids;
        for (int i = 0; i < count; ++i) {
            const std::string text = Format("BT (Page %d, endobj 7 0 obj) Tj ET\n", first + i);
            objects.emplace_back(next,
                                 Format("<< /Type /Page /Parent %d 0 R /Contents %d 0 R >>", node, next + 1));
            objects.emplace_back(next + 1,
                                 Format("<< /Length %d >>\nstream\n%sendstream", text.size(), text));
            kids += Format("%d 0 R ", next);
            next += 2;
        }
        objects.emplace_back(node,
                             Format("<< /Type /Pages /Parent 2 0 R /Count %d /Kids [ %s] >>", count, kids));
        nodes += Format("%d 0 R ", node);
    }
    objects[1].second = Format("<< /Type /Pages /Count %d /Kids [ %s] >>", pages, nodes);
    return MakePdfOf(objects, Format("/Size %d /Root 1 0 R /ID [<0011><0011>]", next));
}

std::string RewritePdf(const std::string& pdf, const std::function<void(QPDFWriter&)>& setUp) {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("sample", pdf.data(), pdf.size());
    QPDFWriter writer(document);
    writer.setOutputMemory();
    setUp(writer);
    writer.write();
    const std::shared_ptr<Buffer> buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

std::string WithObjectStreams(const std::string& pdf) {
    return RewritePdf(pdf, [](QPDFWriter& writer) { writer.setObjectStreamMode(qpdf_o_generate); });
}

std::string Linearized(const std::string& pdf) {
    return RewritePdf(pdf, [](QPDFWriter& writer) { writer.setLinearization(true); });
}

std::string Encrypted(const std::string& pdf, Cipher cipher, const std::string& userPassword,
                      bool objectStreams) {
    return RewritePdf(pdf, [&](QPDFWriter& writer) {
        const char* user = userPassword.c_str();
        const char* owner = "owner";
        if (objectStreams) writer.setObjectStreamMode(qpdf_o_generate);
        switch (cipher) {
            case Cipher::kRc4Of40:
                return writer.setR2EncryptionParametersInsecure(user, owner, true, true, true, true);
            case Cipher::kRc4Of128:
                return writer.setR3EncryptionParametersInsecure(user, owner, true, true, true, true, true,
                                                                true, qpdf_r3p_full);
            case Cipher::kAes128:
                return writer.setR4EncryptionParametersInsecure(user, owner, true, true, true, true, true,
                                                                true, qpdf_r3p_full, true, true);
            case Cipher::kAes256:
                return writer.setR6EncryptionParameters(user, owner, true, true, true, true, true, true,
                                                        qpdf_r3p_full, true);
        }
    });
}

std::string Deflated(const std::string& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string packed(size, '\0');
    EXPECT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                       reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size())),
              Z_OK);
    packed.resize(size);
    return packed;
}

std::string DescribePages(const std::string& pdf) {
    QPDF document;
    document.processMemoryFile("sample", pdf.data(), pdf.size());
    std::string pages = document.isEncrypted() ? "encrypted " : "";
    for (QPDFObjectHandle page : document.getAllPages()) {
        const std::shared_ptr<Buffer> data = page.getKey("/Contents").getStreamData();
        const std::string text(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
        const std::size_t number = text.find("Page ") + 5;
        pages += text.substr(number, text.find(',') - number);
        if (page.getKey("/Rotate").isInteger())
            pages += '@' + std::to_string(page.getKey("/Rotate").getIntValue());
        pages += ' ';
    }
    return pages;
}

std::string ObjectAt(const std::string& pdf, const std::string& path) {
    QPDF document;
    document.processMemoryFile("sample", pdf.data(), pdf.size());
    document.pushInheritedAttributesToPage();
    std::istringstream words(path);
    std::string word;
    words >> word;
    QPDFObjectHandle object =
        word == "root" ? document.getRoot() : document.getAllPages().at(std::stoul(word));
    while (words >> word) {
        if (word == "=") return object.unparseResolved();
        if (word == "data") {
            const std::shared_ptr<Buffer> data = object.getStreamData();
            return std::string(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
        }
        if (object.isStream()) object = object.getDict();
        object = word.front() == '/' ? object.getKey(word) : object.getArrayItem(std::stoi(word));
    }
    EXPECT_FALSE(document.anyWarnings());
    return object.unparse();
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t found = text.find(from);
    EXPECT_NE(found, std::string::npos) << from;
    return found == std::string::npos ? text : text.replace(found, from.size(), to);
}

}  // namespace quirepress
