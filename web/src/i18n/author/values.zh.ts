import type { valuesEn } from "./values.en.ts";

/** The values that devices say, in Chinese. */
export const valuesZh: Record<keyof typeof valuesEn, string> = {
  type_lamp: "指示灯",
  type_gauge: "仪表",
  newLamp: "指示灯",
  newGauge: "仪表",
  deviceSays: "设备反馈",
  valueName: "数值",
  valueNameHint: "无",
  valueUnknown: "服务器还没有这个名称的数值。",
  valuesUnread: "无法读取数值的名称。",
  valueInText: "文字中的 {value 名称} 会显示设备最近反馈的内容。",
  follows: "显示数值，而不是最近发送的内容",
  onWith: "此值为开",
  warns: "设备未连接时给出提示",
  states: "状态",
  stateOf: "状态 {0}",
  stateWhen: "当数值",
  state_equal: "等于",
  state_range: "介于",
  state_stale: "不是最新",
  stateEqual: "此文字",
  stateText: "显示文字",
  stateAdd: "添加状态",
  stateRemove: "移除状态",
  problem_noValue: "需要显示数值，但没有指定数值。",
};
