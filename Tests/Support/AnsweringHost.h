#pragma once
#include "Zelvan/Ports/ZvSilentHost.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Gives one answer to every yes-or-no question and keeps the texts, "title|question".
class AnsweringHost final : public ZvSilentHost {
public:
    explicit AnsweringHost(ZvAnswer answer) : m_answer(answer) {}
    ZvAnswer Ask(const ZvQuestion& question) override {
        texts.push_back(question.title.ToUtf8() + "|" + question.text.ToUtf8());
        EXPECT_EQ(question.buttons, ZvQuestion::Buttons::YesNo);
        return m_answer;
    }
    std::vector<std::string> texts;

private:
    ZvAnswer m_answer;
};
