#pragma once

class LinkOperation;

/// Tells the server for each product whether it is a real one (0) or simulated (1). Blocks for one exchange a product.
void SendModes(const LinkOperation& operation) noexcept;
